// Walks the members' own attributes of a compound collection, member after member, each in ascending tag
// order; a tag that several members hold comes once for each. It borrows the collection, which must outlive
// it and keep its members. Invalidation does not end its walk. Not for several threads at once.
#pragma once

#include "collection/CKivDSCompoundCollection.h"
#include "collection/CKivDSDicomAttributeCollectionIterator.h"

#include <memory>
#include <vector>

/// Reports what the members' iterators report, under their names.
class KIVDS_API CKivDSCompoundCollectionIterator : public CKivDSDicomAttributeCollectionIterator
{
public:
    /// The flags select each member's attributes as for the base class.
    CKivDSCompoundCollectionIterator(CKivDSCompoundCollection& collection, bool walkSingle, bool walkMulti);
    ~CKivDSCompoundCollectionIterator() override;

    /// The first selected attribute of the first member that has one; null when none has.
    CKivDSDicomAttribute* GetFirstAttribute() override;
    /// The next one; null when the walk has ended or never started.
    CKivDSDicomAttribute* GetNextAttribute() override;

private:
    CKivDSDicomAttribute* FirstFromMember(int index, const kivds::Operation& op);

    std::vector<CKivDSDicomAttributeCollection*>* m_pMembers;
    std::unique_ptr<CKivDSDicomAttributeCollectionIterator> m_pCurrent;
    int m_nCurrent = 0;
    bool m_bWalkSingle;
    bool m_bWalkMulti;
};
