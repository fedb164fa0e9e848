// Values per frame and values per sequence item: the frame range, the attribute of one frame, in-sequence
// values.
#include "attribute/CKivDSDicomAttribute.h"
#include "attribute/internal/FrameRange.h"
#include "foundation/internal/Operation.h"

#include <algorithm>
#include <new>

using kivds::Operation;

bool CKivDSDicomAttribute::IsMultiFrame() const
{
    return m_pFrameRange != nullptr;
}

template <class SetFrames>
bool CKivDSDicomAttribute::MakeMultiFrame(SetFrames setFrames)
{
    if (IsMultiFrame())
        ResetMultiFrameInfo();
    m_pFrameRange = kivds::NewFrameRange().release();
    if (!m_pFrameRange)
        return Operation(L"CKivDSDicomAttribute::SetMultiFrameInfo").Fail(L"Failed to allocate frame range");
    kivds::Guarded([&] { return setFrames(*m_pFrameRange); }); // what it cannot hold leaves it empty
    m_bPrivate = false;
    m_bMustReplicate = false;
    return true;
}

bool CKivDSDicomAttribute::SetMultiFrameInfo(int count, int* frames)
{
    return MakeMultiFrame([=](CKivIPPRangeIDC& range) { return range.SetFrames(count, frames); });
}

bool CKivDSDicomAttribute::SetMultiFrameInfo(int first, int second)
{
    return MakeMultiFrame([=](CKivIPPRangeIDC& range) { return range.SetFrames(first, second); });
}

bool CKivDSDicomAttribute::ResetMultiFrameInfo()
{
    delete m_pFrameRange;
    m_pFrameRange = nullptr;
    return true;
}

CKivIPPRangeIDC* CKivDSDicomAttribute::GetFrameRangeCollection() const
{
    if (!IsMultiFrame())
        return nullptr;
    std::unique_ptr<CKivIPPRangeIDC> clone = kivds::CloneFrameRange(*m_pFrameRange);
    if (!clone)
        Operation(L"CKivDSDicomAttribute::GetFrameRangeCollection")
            .Report(L"Failed to create new CKivIPPRangeIDC object");
    return clone.release();
}

// The value of the frame at a position, lent: one value holds an element a frame (or one for all of them),
// several values are one a frame.
bool CKivDSDicomAttribute::LendFrameValue(int position, SKivAGAttributeValue& value,
                                          const Operation& op) const
{
    if (m_nNumberOfValues != 1) {
        const SKivAGAttributeValue* const whole = GetValuePtr(position);
        if (!whole)
            return op.Fail(
                L"Attempt to use invalid value index to access multiframe attribute character value");
        value = *whole;
        return true;
    }
    value = m_pValues[0];
    if (value.nCount == 1)
        return true;
    if (position < 0 || position >= value.nCount)
        return op.Fail(
            L"Attempt to use invalid value index to access multiframe attribute non-character value");
    value.nCount = 1;
    value.pData += static_cast<std::ptrdiff_t>(position) * GetElementSize(value.eType);
    return true;
}

bool CKivDSDicomAttribute::CreateSingleFrameCopy(int frame, CKivDSDicomAttribute** out) const
{
    const Operation op(L"CKivDSDicomAttribute::CreateSingleFrameCopy");
    if (!out)
        return op.Fail(L"Failed to create new DICOM attribute object");
    int position = 0;
    if (IsMultiFrame() && !kivds::FindFrame(*m_pFrameRange, frame, position)) {
        *out = nullptr;
        return true;
    }
    std::unique_ptr<CKivDSDicomAttribute> copy =
        IsMultiFrame() ? std::unique_ptr<CKivDSDicomAttribute>(new (std::nothrow) CKivDSDicomAttribute)
                       : NewPlainCopy();
    if (!copy)
        return op.Fail(L"Failed to create new DICOM attribute object");
    if (IsMultiFrame()) {
        SKivAGAttributeValue value = {};
        char none = 0;
        if (!LendFrameValue(position, value, op))
            return false;
        if (!value.pData && value.nCount == 0 && GetElementSize(value.eType) > 0)
            value.pData = &none; // an empty value has no block, and is no missing one
        if (!copy->InitFromValues(m_ulTag, m_nRepresentation, 1, &value, false) ||
            copy->m_nNumberOfValues != 1)
            return op.Fail(L"Failed to initialize single frame copy from data values");
    }
    *out = copy.release();
    return true;
}

bool CKivDSDicomAttribute::GetNumberOfInSequenceValues(int* out) const
{
    if (!out)
        return Operation(L"CKivDSDicomAttribute::GetNumberOfInSequenceValues")
            .Fail(L"Invalid null output pointer");
    const auto inSequence = [](const SKivAGAttributeValue& value) { return value.nInSequenceIndex >= 0; };
    *out = static_cast<int>(std::count_if(m_pValues, m_pValues + m_nNumberOfValues, inSequence));
    return true;
}

bool CKivDSDicomAttribute::GetInSequenceValue(int index, SKivAGAttributeValue* out) const
{
    if (!out)
        return Operation(L"CKivDSDicomAttribute::GetInSequenceValue")
            .Fail(L"Invalid null output value pointer");
    const SKivAGAttributeValue* const end = m_pValues + m_nNumberOfValues;
    const SKivAGAttributeValue* const value = std::find_if(
        static_cast<const SKivAGAttributeValue*>(m_pValues), end,
        [index](const SKivAGAttributeValue& candidate) { return candidate.nInSequenceIndex == index; });
    return value != end && ::CopyAttributeValue(value, out, -1);
}

bool CKivDSDicomAttribute::CreateInSequenceInitializedCopy(CKivDSDicomAttribute*& out) const
{
    std::unique_ptr<CKivDSDicomAttribute> copy = NewPlainCopy();
    if (!copy)
        return Operation(L"CKivDSDicomAttribute::CreateInSequenceInitializedCopy")
            .Fail(L"Failed to create new DICOM attribute");
    SKivAGAttributeValue* const values = copy->m_pValues;
    const int count = copy->m_nNumberOfValues;
    const bool numbered = std::any_of(values, values + count, [](const SKivAGAttributeValue& value) {
        return value.nInSequenceIndex != 0;
    });
    for (int i = 0; i < count && !numbered; ++i)
        values[i].nInSequenceIndex = i;
    out = copy.release();
    return true;
}
