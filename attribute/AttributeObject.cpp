// The attribute as an object: construction, copying, release, storage of its values, plain accessors.
#include "attribute/CKivDSDicomAttribute.h"
#include "attribute/internal/AttributeBlock.h"
#include "attribute/internal/GatheredValues.h"
#include "attribute/internal/WholeCopy.h"
#include "foundation/internal/ElementTypes.h"
#include "foundation/internal/Operation.h"
#include "platform/internal/Blocks.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

using kivds::Operation;

namespace {

/// Bytes of so many records.
constexpr std::int64_t BytesOf(int records)
{
    return std::int64_t{records} * static_cast<std::int64_t>(sizeof(SKivAGAttributeValue));
}

} // namespace

CKivDSDicomAttribute::CKivDSDicomAttribute(bool bPrivate, bool bMustReplicate)
    : m_bPrivate(bPrivate), m_bMustReplicate(bMustReplicate)
{
}

CKivDSDicomAttribute::CKivDSDicomAttribute(const CKivDSDicomAttribute& src) : CKivDSDicomAttribute(src, false)
{
}

CKivDSDicomAttribute::CKivDSDicomAttribute(const CKivDSDicomAttribute& src, bool inBlock)
    : m_ulTag(src.m_ulTag), m_nRepresentation(src.m_nRepresentation), m_bInBlock(inBlock)
{
    if (src.m_nNumberOfValues > 0 && !AllocAttributeValue(src.m_nNumberOfValues)) {
        Operation(L"CKivDSDicomAttribute::CKivDSDicomAttribute").Report(L" Out of memory ");
        return;
    }
    FillValues(src.m_pValues, src.m_nNumberOfValues);
    m_bPrivate = src.m_bPrivate;
    m_bMustReplicate = src.m_bMustReplicate;
    m_pFrameRange = src.GetFrameRangeCollection();
}

CKivDSDicomAttribute& CKivDSDicomAttribute::operator=(const CKivDSDicomAttribute& src)
{
    if (this == &src)
        return *this;
    Clean();
    ResetMultiFrameInfo();
    m_pFrameRange = src.GetFrameRangeCollection();
    m_ulTag = src.m_ulTag;
    m_nRepresentation = src.m_nRepresentation;
    if (src.m_nNumberOfValues > 0 && !AllocAttributeValue(src.m_nNumberOfValues)) {
        Operation(L"CKivDSDicomAttribute::operator =")
            .Report(L"Failed to allocate new attribute value array");
        return *this;
    }
    FillValues(src.m_pValues, src.m_nNumberOfValues);
    m_bPrivate = src.m_bPrivate;
    m_bMustReplicate = src.m_bMustReplicate;
    return *this;
}

CKivDSDicomAttribute::~CKivDSDicomAttribute()
{
    // Named by class: a destructor reaches its own class's operations only.
    CKivDSDicomAttribute::Clean();
    CKivDSDicomAttribute::ResetMultiFrameInfo();
}

// Copies `count` values into the records that AllocAttributeValue has just provided. A value that holds
// nothing to copy is reported and leaves an empty record; when memory runs out no value is left, rather than
// some of them.
bool CKivDSDicomAttribute::FillValues(const SKivAGAttributeValue* values, int count)
{
    m_nNumberOfValues = count;
    for (int i = 0; i < count; ++i) {
        if (!CopyAttributeValue(&values[i], &m_pValues[i], i) && kivds::HasBytes(values[i])) {
            Clean();
            return false;
        }
    }
    return true;
}

// A new plain attribute equal to this one; null when it cannot be made whole.
std::unique_ptr<CKivDSDicomAttribute> CKivDSDicomAttribute::NewPlainCopy() const
{
    std::unique_ptr<CKivDSDicomAttribute> copy(new (std::nothrow) CKivDSDicomAttribute(*this));
    return copy && kivds::IsWhole(*copy, *this) ? std::move(copy) : nullptr;
}

bool CKivDSDicomAttribute::IsPrivate() const
{
    return m_bPrivate;
}

bool CKivDSDicomAttribute::MustReplicate() const
{
    return m_bMustReplicate;
}

bool CKivDSDicomAttribute::GetTag(unsigned long* out) const
{
    if (!out)
        return Operation(L"CKivDSDicomAttribute::GetTag").Fail(L" Nul output parameter pointer ");
    *out = m_ulTag;
    return true;
}

char* CKivDSDicomAttribute::GetDescription() const
{
    return nullptr;
}

int CKivDSDicomAttribute::GetDicomRepresentation() const
{
    return m_nRepresentation;
}

int CKivDSDicomAttribute::GetType() const
{
    return m_nType;
}

bool CKivDSDicomAttribute::GetNumberOfValues(int* out) const
{
    if (!out)
        return Operation(L"CKivDSDicomAttribute::GetNumberOfValues").Fail(L" Nul output parameter pointer ");
    *out = m_nNumberOfValues;
    return true;
}

bool CKivDSDicomAttribute::GetValue(int i, SKivAGAttributeValue* out) const
{
    const SKivAGAttributeValue* value = GetValuePtr(i);
    if (!out || !value)
        return Operation(L"CKivDSDicomAttribute::GetValue").Fail(L" Bad input / output parameters ");
    return ::CopyAttributeValue(value, out, -1);
}

bool CKivDSDicomAttribute::SetValue(int i, SKivAGAttributeValue* in)
{
    if (!in || !GetValuePtr(i))
        return Operation(L"CKivDSDicomAttribute::SetValue").Fail(L" Bad input / output parameters ");
    SKivAGAttributeValue& value = m_pValues[i];
    if (in == &value)
        return CopyAttributeValue(in, &value, -1); // onto itself: nothing to release
    SKivAGAttributeValue former = value; // released only after the copy: `in` may refer to the same block
    if (!CopyAttributeValue(in, &value, -1))
        return false;
    m_pGathered.reset();
    return DeleteAttributeValue(former);
}

bool CKivDSDicomAttribute::DeleteAttributeValue(SKivAGAttributeValue& v) const
{
    if (IsPreallocatedData(v.pData))
        return true;
    if (m_bInBlock && kivds::AttributeBlock::ReturnData(*this, v.pData, kivds::ByteSize(v.eType, v.nCount))) {
        v.pData = nullptr;
        return true;
    }
    return FreeAttributeValue(v);
}

bool CKivDSDicomAttribute::IsPreallocatedData(const char* p) const
{
    return p == m_InlineData;
}

void CKivDSDicomAttribute::SetDataElementType(tagEKivAGAttributeType t)
{
    m_pGathered.reset();
    for (int i = 0; i < m_nNumberOfValues; ++i)
        m_pValues[i].eType = t;
}

bool CKivDSDicomAttribute::AllocAttributeValue(int n)
{
    m_pGathered.reset();
    SKivAGAttributeValue* const records = n > 1 ? NewRecords(n) : &m_InlineValue;
    if (records)
        m_pValues = records;
    return records != nullptr;
}

void CKivDSDicomAttribute::AdoptValues(std::unique_ptr<SKivAGAttributeValue[]> values, int count)
{
    Clean();
    m_pValues = values.release();
    m_nNumberOfValues = count;
}

// Memory for the data of one value: beside the attribute where it lies in a block that has room, else a heap
// block; null when memory runs out.
// NOLINTNEXTLINE(readability-make-member-function-const): what lies beside the attribute is its own
char* CKivDSDicomAttribute::NewData(std::int64_t bytes)
{
    char* const beside = m_bInBlock ? kivds::AttributeBlock::TakeData(*this, bytes) : nullptr;
    return beside ? beside : kivds::NewBlock(bytes).release();
}

// The same for the records of several values, which are zeroed.
// NOLINTNEXTLINE(readability-make-member-function-const): the same
SKivAGAttributeValue* CKivDSDicomAttribute::NewRecords(int n)
{
    char* const beside = m_bInBlock ? kivds::AttributeBlock::TakeData(*this, BytesOf(n)) : nullptr;
    if (!beside)
        return GetNewAttributeValueArray(n);
    auto* const records = reinterpret_cast<SKivAGAttributeValue*>(beside);
    std::uninitialized_value_construct_n(records, n);
    return records;
}

// Gives back the records, but not the data of their values.
void CKivDSDicomAttribute::ReleaseRecords()
{
    const bool isInside =
        m_pValues == &m_InlineValue ||
        (m_bInBlock && kivds::AttributeBlock::ReturnData(*this, m_pValues, BytesOf(m_nNumberOfValues)));
    if (!isInside)
        delete[] m_pValues;
}

bool CKivDSDicomAttribute::Alloc(int nValues, tagEKivAGAttributeType type, int nElements)
{
    const Operation op(L"CKivDSDicomAttribute::Alloc");
    Clean();
    if (nValues > 0 && !AllocAttributeValue(nValues))
        return op.Fail(L"Failed to allocate new attribute value array");
    m_nNumberOfValues = std::max(nValues, 0);
    const std::int64_t bytes = kivds::ByteSize(type, nElements);
    if (bytes < 0) {
        Clean();
        return op.Fail(L"Invalid byte size");
    }
    m_bPreallocatedData = nValues == 1 && bytes <= static_cast<std::int64_t>(sizeof m_InlineData);
    if (m_bPreallocatedData) {
        std::fill_n(m_InlineData, sizeof m_InlineData, '\0');
        m_InlineValue = {nElements, type, 0, m_InlineData};
        return true;
    }
    for (int i = 0; i < m_nNumberOfValues; ++i) {
        char* const data = NewData(bytes);
        if (!data) {
            Clean();
            return op.Fail(L"Failed to allocate attribute buffer");
        }
        std::fill_n(data, static_cast<std::size_t>(bytes), '\0');
        m_pValues[i] = {nElements, type, 0, data};
    }
    return true;
}

bool CKivDSDicomAttribute::CopyAttributeValue(const SKivAGAttributeValue* const src,
                                              SKivAGAttributeValue* const dst, int valueIndex)
{
    const Operation op(L"CKivDSDicomAttribute::CopyAttributeValue");
    if (!src || !dst)
        return op.Fail(L"Invalid input parameter");
    if (!src->pData)
        return op.Fail(L"Invalid input buffer ");
    if (dst == src && valueIndex < 0)
        return true;
    const std::int64_t bytes = kivds::ByteSize(src->eType, src->nCount);
    if (bytes == 0) {
        dst->pData = nullptr;
        dst->nCount = 0;
        dst->eType = src->eType;
        return true;
    }
    const bool inside =
        valueIndex == 0 && bytes > 0 && bytes < static_cast<std::int64_t>(sizeof m_InlineData);
    char* const data = inside ? m_InlineData : NewData(bytes);
    if (!data)
        return op.Fail(L"Failed to allocate destination buffer");
    std::memmove(data, src->pData, static_cast<std::size_t>(bytes));
    *dst = {src->nCount, src->eType, src->nInSequenceIndex, data};
    m_bPreallocatedData = inside;
    return true;
}

void CKivDSDicomAttribute::ReleaseValues()
{
    m_pGathered.reset();
    for (int i = 0; i < m_nNumberOfValues; ++i)
        DeleteAttributeValue(m_pValues[i]);
    ReleaseRecords();
    m_pValues = nullptr;
}

void CKivDSDicomAttribute::Clean()
{
    if (m_pValues)
        ReleaseValues();
    m_nNumberOfValues = 0;
    m_InlineValue = {};
    m_bPreallocatedData = false;
}
