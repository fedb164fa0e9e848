# What each library is made of, paths from the root. Headers listed here are public and installed; those in internal/
# folders are not.
set(KivIPBaseErrorU_DESCRIPTION "The error sink")
set(KivIPBaseErrorU_HEADERS
    platform/CKivIPBaseError.h
    platform/Export.h)
set(KivIPBaseErrorU_SOURCES
    platform/standin/CKivIPBaseError.cpp)

set(KivIPPDicomScopeItemU_DESCRIPTION "Scope items, frame ranges and their factory")
set(KivIPPDicomScopeItemU_HEADERS
    platform/CKivIPPRangeIDC.h
    platform/CKivIPPScopeItemC.h
    platform/CKivIPPScopeItemFactory.h
    platform/CKivIPPSerialFormC.h
    platform/Guid.h)
set(KivIPPDicomScopeItemU_SOURCES
    platform/standin/CKivIPPRangeIDC.cpp
    platform/standin/CKivIPPScopeItemC.cpp
    platform/standin/CKivIPPScopeItemFactory.cpp)

set(KivIPPBaseScopeU_DESCRIPTION "Scopes")
set(KivIPPBaseScopeU_HEADERS
    platform/CKivIPPScopeC.h
    platform/CKivIPPScopeCollectionC.h
    platform/CKivIPPScopeElementC.h)
set(KivIPPBaseScopeU_SOURCES
    platform/standin/CKivIPPScopeC.cpp
    platform/standin/CKivIPPScopeCollectionC.cpp
    platform/standin/CKivIPPScopeElementC.cpp)

set(KivDSDataU_DESCRIPTION "DICOM data in memory")
set(KivDSDataU_HEADERS
    KivDSDataU.h
    attribute/CKivDSCodeSequenceAttribute.h
    attribute/CKivDSDicomAttribute.h
    attribute/CKivDSDicomAttributeFactory.h
    attribute/DumpListener.h
    collection/AttributeArray.h
    collection/AttributeMap.h
    collection/CKivDSBaseDicomAttributeCollection.h
    collection/CKivDSCompoundCollection.h
    collection/CKivDSCompoundCollectionIterator.h
    collection/CKivDSDicomAttributeCollection.h
    collection/CKivDSDicomAttributeCollectionIterator.h
    collection/CKivDSEnhancedMFCollection.h
    foundation/AttributeValue.h
    foundation/CKivDSBase.h
    foundation/CKivDSSubscriber.h
    foundation/CRWLock.h
    platform/Synchronization.h
    scriptversion/CKivDSScriptVersion.h)
set(KivDSDataUObjects_SOURCES
    attribute/AttributeDateTime.cpp
    attribute/AttributeInit.cpp
    attribute/AttributeMultiFrame.cpp
    attribute/AttributeObject.cpp
    attribute/AttributeOperators.cpp
    attribute/AttributeRender.cpp
    attribute/AttributeStream.cpp
    attribute/AttributeText.cpp
    attribute/CKivDSCodeSequenceAttribute.cpp
    attribute/CKivDSDicomAttributeFactory.cpp
    attribute/internal/AttributeBlock.cpp
    attribute/internal/DumpChannel.cpp
    attribute/internal/FrameRange.cpp
    attribute/internal/GatheredValues.cpp
    attribute/internal/NumberText.cpp
    attribute/internal/Representation.cpp
    collection/AttributeArray.cpp
    collection/AttributeMap.cpp
    collection/CKivDSBaseDicomAttributeCollection.cpp
    collection/CKivDSCompoundCollection.cpp
    collection/CKivDSCompoundCollectionIterator.cpp
    collection/CKivDSDicomAttributeCollection.cpp
    collection/CKivDSDicomAttributeCollectionIterator.cpp
    collection/CKivDSEnhancedMFCollection.cpp
    collection/CollectionFrames.cpp
    collection/CollectionOperators.cpp
    collection/CollectionScope.cpp
    collection/CollectionStream.cpp
    collection/internal/FrameCount.cpp
    collection/internal/ScopeSlot.cpp
    foundation/AttributeValue.cpp
    foundation/CKivDSSubscriber.cpp
    foundation/CRWLock.cpp
    platform/standin/Synchronization.cpp
    scriptversion/CKivDSScriptVersion.cpp)
