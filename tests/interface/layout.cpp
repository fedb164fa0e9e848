// What callers' compiled code knows of the public types: size and alignment, the places of public fields, the
// order of virtual tables. This file is not linked: scripts/interface reads all of it off the assembly that a
// compiler makes of it, in which a virtual table is a list of names, whichever platform it is compiled for.
// Each public type has a line here.
#include "dicom/DicomFile.h"
#include "dicom/TextDecoder.h"
#include "KivDSDataU.h"

/// A class derived from C has the virtual table of C, with its own destructor.
template <class C>
struct Class : C
{
    static const int size;
    static const int align;
};
template <class C>
const int Class<C>::size = sizeof(C);
template <class C>
const int Class<C>::align = alignof(C);

/// A pointer to a data member is the member's offset (Itanium C++ ABI 2.3).
template <auto field>
struct Field
{
    static const decltype(field) offset;
};
template <auto field>
const decltype(field) Field<field>::offset = field;

template struct Class<_GUID>;
template struct Field<&_GUID::Data1>;
template struct Field<&_GUID::Data2>;
template struct Field<&_GUID::Data3>;
template struct Field<&_GUID::Data4>;
template struct Class<CKivIPBaseError>;
template struct Class<CKivIPPSerialFormC>;
template struct Class<CKivIPPScopeItemC>;
template struct Class<CKivIPPRangeIDC>;
template struct Class<CKivIPPScopeItemFactory>;
template struct Class<CKivIPPScopeC>;
template struct Class<CKivIPPScopeElementC>;
template struct Class<CKivIPPScopeCollectionC>;
template struct Class<kivds::Event>;
template struct Class<kivds::Mutex>;
template struct Class<kivds::Counter>;

template struct Class<SKivAGAttributeValue>;
template struct Field<&SKivAGAttributeValue::nCount>;
template struct Field<&SKivAGAttributeValue::eType>;
template struct Field<&SKivAGAttributeValue::nInSequenceIndex>;
template struct Field<&SKivAGAttributeValue::pData>;
template struct Class<CRWLock>;
template struct Class<CKivDSBase>;
template struct Class<CKivDSSubscriber>;

template struct Class<CKivDSDicomAttribute>;
template struct Class<CKivDSDicomAttributeFactory>;
template struct Class<CKivDSCodeSequenceAttribute>;
template struct Class<tagSKivDSCodeSequenceAttributeInfo>;
template struct Field<&tagSKivDSCodeSequenceAttributeInfo::szCodeValue>;
template struct Field<&tagSKivDSCodeSequenceAttributeInfo::szCodingSchemeDesignator>;
template struct Field<&tagSKivDSCodeSequenceAttributeInfo::szCodingSchemeVersion>;
template struct Field<&tagSKivDSCodeSequenceAttributeInfo::szCodeMeaning>;
template struct Field<&tagSKivDSCodeSequenceAttributeInfo::szContextIdentifier>;
template struct Field<&tagSKivDSCodeSequenceAttributeInfo::szMappingResource>;
template struct Field<&tagSKivDSCodeSequenceAttributeInfo::szContextGroupVersion>;
template struct Field<&tagSKivDSCodeSequenceAttributeInfo::nContextGroupExtensionFlag>;
template struct Field<&tagSKivDSCodeSequenceAttributeInfo::szContextGroupLocalVersion>;
template struct Field<&tagSKivDSCodeSequenceAttributeInfo::szContextGroupExtensionCreatorUID>;

template struct Class<CKivDSDicomAttributeCollection>;
template struct Class<CKivDSBaseDicomAttributeCollection>;
template struct Class<CKivDSCompoundCollection>;
template struct Class<CKivDSEnhancedMFCollection>;
template struct Class<CKivDSDicomAttributeCollectionIterator>;
template struct Class<CKivDSCompoundCollectionIterator>;

template struct Class<CKivDSScriptVersion>;
template struct Class<CKivDSScriptVersion::tagVersion>;
template struct Field<&CKivDSScriptVersion::tagVersion::nLowestVersion>;
template struct Field<&CKivDSScriptVersion::tagVersion::nHighestVersion>;

template struct Class<kivds::DicomFile>;
template struct Class<kivds::TextDecoder>;
template struct Class<kivds::DicomWarning>;
template struct Field<&kivds::DicomWarning::tag>;
template struct Field<&kivds::DicomWarning::text>;
template struct Class<kivds::DicomImport>;
template struct Field<&kivds::DicomImport::collection>;
template struct Field<&kivds::DicomImport::warnings>;
template struct Field<&kivds::DicomImport::failure>;
template struct Field<&kivds::DicomImport::error>;
