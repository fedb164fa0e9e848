#include "tests/support/DocumentedReports.h"

#include <algorithm>
#include <initializer_list>
#include <map>
#include <string>
#include <string_view>
#include <tuple>

namespace kivds::test {

namespace {

/// Reports that share a code, and the functions of a class that make them, a semicolon between their names.
struct SReports
{
    std::wstring_view m_Class;
    std::wstring_view m_Functions;
    int m_nCode;
    std::initializer_list<std::wstring_view> m_Messages;
    std::initializer_list<std::wstring_view> m_WithoutMemory;
};

constexpr std::wstring_view kAttribute = L"CKivDSDicomAttribute::";
constexpr std::wstring_view kPart = L"CKivDSBaseDicomAttributeCollection::";
constexpr std::wstring_view kFacade = L"CKivDSDicomAttributeCollection::";
constexpr std::wstring_view kCompound = L"CKivDSCompoundCollection::";
constexpr std::wstring_view kEnhanced = L"CKivDSEnhancedMFCollection::";
constexpr std::wstring_view kCodes = L"CKivDSCodeSequenceAttribute::";
constexpr std::wstring_view kVersions = L"CKivDSScriptVersion::";
constexpr std::wstring_view kSubscriber = L"CKivDSSubscriber::";
constexpr std::wstring_view kIterator = L"CKivDSDicomAttributeCollectionIterator::";

// What many functions say alike.
constexpr std::wstring_view kUnexpected = L"Unexpected error";
constexpr std::wstring_view kBadInput = L" Bad input parameters ";
constexpr std::wstring_view kBadInputOutput = L" Bad input / output parameters ";
constexpr std::wstring_view kInvalidInput = L" Invalid input parameters ";
constexpr std::wstring_view kNoCompound = L"Operation not supported on compound collections ";
constexpr std::wstring_view kNoEnhanced = L"Operation not supported on enhanced MF collections ";
constexpr std::wstring_view kNotInitialized = L"Attribute collection not properly initialized";
constexpr std::wstring_view kNullMember =
    L"Invalid null DICOM attribute collection in compound attribute collection";
constexpr std::wstring_view kNullOutput = L" Null output pointer parameter ";
constexpr std::wstring_view kNulOutput = L" Nul output parameter pointer ";
constexpr std::wstring_view kNoScope = L" Unable to initialize the scope object ";
constexpr std::wstring_view kNoValues = L" Unable to allocate attribute values ";
constexpr std::wstring_view kNoArray = L"Failed to allocate attribute value array";
constexpr std::wstring_view kNoNewArray = L"Failed to allocate new attribute value array";
constexpr std::wstring_view kNoDestination = L"Failed to allocate destination buffer";
constexpr std::wstring_view kOtherFrames =
    L"Source and destination DACs have different number of frames. Operation is ignored.";

// clang-format off
const SReports reports[] = {
    // values
    {L"", L"GetNewAttributeValueArray", 0, {}, {L"Failed to allocate new attibute value"}},
    {L"", L"CopyAttributeValue", 0, {L"Invalid input parameters", L"Empty source value "}, {kNoDestination}},
    {L"", L"operator <", 1, {L"Attempt to quantitatively compare attribute values of different type",
        L"Attempt to quantitatively compare multiframe attributes"}, {}},
    // subscriptions
    {kSubscriber, L"Subscribe", 0, {}, {L"Unexpected error while subscribing "}},
    {kSubscriber, L"NotifySubscribers;NotifySubscribers2", 0,
        {L"Unexpected error while notifying the subscribers "}, {}},
    // the attribute: object and values
    {kAttribute, L"CKivDSDicomAttribute", 0, {}, {L" Out of memory "}},
    {kAttribute, L"operator =", 0, {}, {kNoNewArray}},
    {kAttribute, L"operator +=", 0, {}, {kNoNewArray, L"Failed to allocate new array of attribute values"}},
    {kAttribute, L"GetTag;GetNumberOfValues", 0, {kNulOutput}, {}},
    {kAttribute, L"GetValue;SetValue", 0, {kBadInputOutput}, {}},
    {kAttribute, L"Alloc", 0, {L"Invalid byte size"}, {kNoNewArray, L"Failed to allocate attribute buffer"}},
    {kAttribute, L"CopyAttributeValue", 0, {L"Invalid input parameter", L"Invalid input buffer "},
        {kNoDestination}},
    {kAttribute, L"GetValueAsString", 0, {L"Invalid input attribute index"}, {}},
    {kAttribute, L"DumpValuesInfo", 0, {}, {kUnexpected}},
    // initialisation and conversions
    {kAttribute, L"InitFromDicomData;InitFromDicomElement", 0, {kBadInput,
        L" Unable to initialize the attribute object "}, {}},
    {kAttribute, L"InitFromValues", 0, {kBadInput, L" Sequence type DICOM data values not supported "},
        {kNoArray}},
    {kAttribute, L"Convert2Date;Convert2Time;Convert2DateTime", 0, {kBadInput}, {kNoValues}},
    {kAttribute, L"Convert2Date ;Convert2Time ", 1, {L" Failed to convert the DICOM values ",
        L" Failed to convert the DICOM string "}, {}},
    {kAttribute, L"InternalConvert2Date ", 1, {L" Unsupported DICOM data format "}, {}},
    {kAttribute, L"InternalConvert2Time", 0, {kBadInput, L"Signed to Unsigned conversion error"}, {}},
    {kAttribute, L"Convert2Age", 0, {kBadInput, L" Unsupported DICOM age string "}, {kNoValues}},
    {kAttribute, L"Convert2Double", 0, {kBadInput, L" Unsupported DICOM decimal string format "},
        {L" Unable to allocate the attribute values  "}},
    {kAttribute, L"Convert2Int", 0, {kBadInput, L" Unsupported DICOM integer string format "},
        {L" Unable to allocat the attribute values "}},
    {kAttribute, L"Convert2String", 0, {kBadInput}, {kNoArray}},
    {kAttribute, L"Convert2PersonName", 0, {kBadInput}, {kNoNewArray}},
    {L"", L"Convert2VectOfScalars", 0, {L"Invalid input parameter"}, {kNoDestination}},
    // frames and sequence items
    {kAttribute, L"SetMultiFrameInfo", 0, {}, {L"Failed to allocate frame range"}},
    {kAttribute, L"GetFrameRangeCollection", 0, {}, {L"Failed to create new CKivIPPRangeIDC object"}},
    {kAttribute, L"CreateSingleFrameCopy", 0,
        {L"Attempt to use invalid value index to access multiframe attribute non-character value",
        L"Attempt to use invalid value index to access multiframe attribute character value",
        L"Failed to initialize single frame copy from data values"},
        {L"Failed to create new DICOM attribute object"}},
    {kAttribute, L"GetNumberOfInSequenceValues", 0, {L"Invalid null output pointer"}, {}},
    {kAttribute, L"GetInSequenceValue", 0, {L"Invalid null output value pointer"}, {}},
    {kAttribute, L"CreateInSequenceInitializedCopy", 0, {}, {L"Failed to create new DICOM attribute"}},
    // the attribute's stream
    {kAttribute, L"GetSize", 0, {}, {L"Failed to obtain serialization size of frame range collection"}},
    {kAttribute, L"Serialize", 0, {L" Unable to serialize the attribute value ",
        L"Attempt to serialize attribute value with null data pointer",
        L" Inconsistent attribute format: serialization aborted"}, {}},
    {kAttribute, L"Deserialize", 0, {kBadInput, L" Unable to deserialize the attribute value ",
        L"Invalid input parameter"}, {kNoArray, L"Failed to allocate new frame range collection",
        L"Failed to allocate attribute value data buffer"}},
    // factory and code sequence
    {L"CKivDSDicomAttributeFactory::", L"CreateDicomAttribute", 0, {L"Unknown input DICOM attribute type",
        L"Unknown DICOM attribute type"}, {}},
    {kCodes, L"CKivDSCodeSequenceAttribute", 1,
        {L"Failed to initialize DICOM attribute from code sequence values"}, {}},
    {kCodes, L"CKivDSCodeSequenceAttribute;operator =", 0, {}, {kUnexpected}},
    {kCodes, L"operator +=", 0, {L"Attempt to add code sequence attributes of different DICOM tags"},
        {kNoNewArray, kUnexpected}},
    {kCodes, L"Serialize", 0, {L"Failed to serialize base class attribute data",
        L"Inconsistent serialization procedure: number of bytes written to buffer does not equal expected "
        L"serialization size"}, {}},
    {kCodes, L"Deserialize", 0, {L"Failed to deserialize base class data",
        L"Inconsistent deserialization procedure: number of bytes read from deserialization buffer does "
        L"not equal expected number of bytes read"}, {kUnexpected}},
    // the part
    {kPart, L"CKivDSBaseDicomAttributeCollection", 0, {L"Failed to create single frame copy of attribute"},
        {L"Failed to intialize frame index attribute", L"Failed to add frame index attribute to collection",
        kUnexpected}},
    {kPart, L"GetAttribute;GetAttributePtr;GetNumberOfAttributes", 0, {kNullOutput}, {}},
    {kPart, L"GetNumberOfFrames", 0, {L"Failed to retrieve the number of image frames"}, {}},
    {kPart, L"AddAttribute", 0, {L" Null input parameter ", L" Unable to retrieve attribute tag "},
        {kUnexpected}},
    {kPart, L"RemoveAttribute", 0, {kNullOutput, L" Unable to retrieve the attribute's tag "}, {}},
    {kPart, L"Serialize", 0, {L"Inconsistent serialization format: serialization aborted"}, {}},
    {kPart, L"Deserialize", 0, {kInvalidInput, L"Failed to deserialize attribute"},
        {L"Failed to add attribute to collection"}},
    {kPart, L"GetScope;GetScopeAsCollection", 0, {kNoScope}, {}},
    {kPart, L"SetScope", 0, {L" Unsupported scope type", kNoScope}, {}},
    {kPart, L"operator =;operator +=;operator *=;operator |=", 0, {}, {kUnexpected}},
    // the facade
    {kFacade, L"CKivDSDicomAttributeCollection", 0,
        {L"Fail to extract the frame collection from the enhanced MF collection", L"Unable to add coll"},
        {L"Failed to initialize from object", kUnexpected}},
    {kFacade, L"AddCollection", 0, {}, {L"Unexpected error while trying to initialize from collection"}},
    {kFacade, L"CreateCollection", 0, {}, {L"Memory alloc error"}},
    {kFacade, L"AddAttribute;RemoveAllAttributes;RemoveAllSingleFrameAttributes;"
        L"RemoveAllMultiFrameAttributes;GetNumberOfSingleFrameAttributes;GetNumberOfMultiFrameAttributes;"
        L"GetMapPtr;GetMultiFrameMapPtr;Dump;operator +=;operator *=;operator /=;operator ^=;operator ==", 0,
        {kNoCompound}, {}},
    {kFacade, L"RemoveAttribute", 0, {kNoCompound, kNotInitialized}, {}},
    {kFacade, L"operator -=;operator |=", 0, {kNoCompound}, {kUnexpected}},
    {kFacade, L"operator ^=;operator =", 1, {kNullMember}, {}},
    {kFacade, L"operator =;UpdateSingleFrameCollection", 0, {kNoCompound, kNoEnhanced}, {kUnexpected}},
    {L"", L"operator /;operator ^;operator |", 0, {kNoCompound, kNotInitialized}, {kUnexpected}},
    {kFacade, L"Serialize", 0, {kNoCompound, L"Inconsistent serialization format: serialization aborted "},
        {}},
    {kFacade, L"Deserialize", 0, {kInvalidInput, kNoCompound, kNoEnhanced}, {kUnexpected}},
    {kFacade, L"SetScope", 0, {L"Failed to set scope of compound collection"}, {}},
    {kFacade, L"UpdateMultiFrameScope", 0, {L"Unable to retrieve the image scope item ",
        L"Fail to retrieve image UID", L"Inconsistent image scope item for multiframe collection",
        L"Failed to set scope of original collection"}, {}},
    {kFacade, L"Split", 0, {kNoCompound, kNoEnhanced, L"Attempt to split an uninitialized object "},
        {kUnexpected}},
    {kFacade, L"MergeCollections", 0, {L"Failed to set scope on merged collection"}, {}},
    {kFacade, L"AddCompoundCollection", 0, {L"Null input collection as input",
        L"Bad input parameter: the input collection is not compounded ",
        L"Null compound collection inner object ", L"Bad input parameter: the compound collection is empty "},
        {L"Unexpected error while converting the compound collection"}},
    {kFacade, L"ConvertCompoundToFlatCollection", 0, {L"Failed to add compound collection"},
        {L"Failed to set scope on flattened collection"}},
    // the compound collection
    {kCompound, L"AddCollection", 0, {L"Null input pointer parameter",
        L"Using a compound collection inside a compound collection", kNoCompound}, {kUnexpected}},
    {kCompound, L"GetCollection", 0, {L"Collection index out of range"}, {}},
    {kCompound, L"AppendCompoundCollection", 0, {L"Bad arg", L"Bad arg body", L"Unable to append coll "}, {}},
    {kCompound, L"GetAttribute;GetAttributePtr;GetNumberOfAttributes;GetNumberOfFrames", 0,
        {L"Null output pointer parameter"}, {}},
    {kCompound, L"GetScope", 0, {L"Unable to initialize the scope object"}, {}},
    {kCompound, L"GetScopeAsCollection", 0, {kNoScope}, {}},
    {kCompound, L"SetScope", 0, {L"Unsupported scope type", L"Unable to initialize the scope object"}, {}},
    // the enhanced multi-frame collection
    {kEnhanced, L"CKivDSEnhancedMFCollection", 0, {}, {kUnexpected}},
    {kEnhanced, L"AddCollection", 0, {L"Null collection pointer as input parameter"}, {}},
    {kEnhanced, L"AddMFCollection", 0, {L"Null collection pointer as input parameter", kNoEnhanced},
        {kUnexpected}},
    {kEnhanced, L"GetCollection", 0, {L"Object not properly initialized "},
        {L"Unexpected error while creating the regular collection"}},
    {kEnhanced, L"GetMFCollection", 0, {L"Invalid multiframe collection index "},
        {L"Unexpected error while creating the MF collection"}},
    {kEnhanced, L"operator |=;operator -=", 1, {kOtherFrames}, {}},
    {kEnhanced, L"operator |=", 0, {}, {L"Insufficent memory to allocate DAC object."}},
    {kEnhanced, L"GetSize", 0, {L"Failed to retrieve the size of the regular collection",
        L"Failed to get the size of the emf collection"}, {}},
    {kEnhanced, L"Serialize", 0, {L"Failed to serialize the regular collections",
        L"Failed to deserialize the emf collection"}, {}},
    {kEnhanced, L"Deserialize", 0, {L"Failed to deserialize the regular collections",
        L"Failed to deserialize the emf collection"}, {kUnexpected}},
    // iterators
    {kIterator, L"GetFirstAttribute;GetNextAttribute", 0, {L"Object not (properly) initialized"}, {}},
    {L"CKivDSCompoundCollectionIterator::", L"GetFirstAttribute;GetNextAttribute", 0, {}, {kUnexpected}},
    // script versions
    {kVersions, L"CKivDSScriptVersion;operator =", 0, {}, {kUnexpected}},
    {kVersions, L"AddVersion", 0, {L"Invalid modality string"}, {kUnexpected}},
    {kVersions, L"GetVersion", 0, {L"Invalid index ", L"Invalid modality string"}, {kUnexpected}},
    {kVersions, L"Serialize", 0, {L"Invalid serialization stream",
        L"Inconsistent serialization format: serialization aborted "}, {}},
    {kVersions, L"Deserialize", 0, {L"Invalid deserialization stream"}, {kUnexpected}},
};
// clang-format on

using Key = std::tuple<std::wstring, std::wstring_view, int>;

std::map<Key, Documented> Table()
{
    std::map<Key, Documented> table;
    for (const SReports& row : reports) {
        for (std::size_t at = 0, end = 0; end < row.m_Functions.size(); at = end + 1) {
            end = std::min(row.m_Functions.find(L';', at), row.m_Functions.size());
            const auto function = std::wstring(row.m_Class).append(row.m_Functions.substr(at, end - at));
            for (const std::wstring_view message : row.m_Messages)
                table.emplace(Key(function, message, row.m_nCode), Documented::Yes);
            for (const std::wstring_view message : row.m_WithoutMemory)
                table.emplace(Key(function, message, row.m_nCode), Documented::WithoutMemory);
        }
    }
    return table;
}

} // namespace

Documented Lookup(const wchar_t* function, const wchar_t* message, int code)
{
    static const std::map<Key, Documented> table = Table();
    const auto row = table.find(Key(function, message, code));
    return row != table.end() ? row->second : Documented::No;
}

} // namespace kivds::test
