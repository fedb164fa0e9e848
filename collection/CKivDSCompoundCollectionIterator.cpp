#include "collection/CKivDSCompoundCollectionIterator.h"

#include "foundation/internal/Operation.h"

#include <new>

CKivDSCompoundCollectionIterator::CKivDSCompoundCollectionIterator(CKivDSCompoundCollection& collection,
                                                                   bool walkSingle, bool walkMulti)
    : m_pMembers(&collection.GetCollectionVect()), m_bWalkSingle(walkSingle), m_bWalkMulti(walkMulti)
{
}

CKivDSCompoundCollectionIterator::~CKivDSCompoundCollectionIterator() = default;

// The first attribute of the member at `index` or of the next one that has any; null, and no current member,
// when none has.
CKivDSDicomAttribute* CKivDSCompoundCollectionIterator::FirstFromMember(int index, const kivds::Operation& op)
{
    for (m_nCurrent = index; m_nCurrent < static_cast<int>(m_pMembers->size()); ++m_nCurrent) {
        CKivDSDicomAttributeCollection& member = *(*m_pMembers)[static_cast<std::size_t>(m_nCurrent)];
        m_pCurrent.reset(new (std::nothrow)
                             CKivDSDicomAttributeCollectionIterator(member, m_bWalkSingle, m_bWalkMulti));
        if (!m_pCurrent) {
            op.Report(kivds::kUnexpectedError);
            break;
        }
        if (CKivDSDicomAttribute* const first = m_pCurrent->GetFirstAttribute())
            return first;
    }
    m_pCurrent.reset();
    m_nCurrent = 0;
    return nullptr;
}

CKivDSDicomAttribute* CKivDSCompoundCollectionIterator::GetFirstAttribute()
{
    return FirstFromMember(0, kivds::Operation(L"CKivDSCompoundCollectionIterator::GetFirstAttribute"));
}

CKivDSDicomAttribute* CKivDSCompoundCollectionIterator::GetNextAttribute()
{
    if (!m_pCurrent)
        return nullptr;
    CKivDSDicomAttribute* const next = m_pCurrent->GetNextAttribute();
    if (next)
        return next;
    return FirstFromMember(m_nCurrent + 1,
                           kivds::Operation(L"CKivDSCompoundCollectionIterator::GetNextAttribute"));
}
