// Values per frame and values per sequence item: the frame range, the attribute of one frame, in-sequence
// values.
#include "attribute/CKivDSDicomAttribute.h"
#include "attribute/internal/FrameRange.h"
#include "foundation/internal/Operation.h"

#include <algorithm>

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
    setFrames(*m_pFrameRange);
    m_bPrivate = false;
    m_bMustReplicate = false;
    return true;
}

bool CKivDSDicomAttribute::SetMultiFrameInfo(int count, int* frames)
{
    return MakeMultiFrame([&](CKivIPPRangeIDC& range) { range.SetFrames(count, frames); });
}

bool CKivDSDicomAttribute::SetMultiFrameInfo(int first, int second)
{
    return MakeMultiFrame([&](CKivIPPRangeIDC& range) { range.SetFrames(first, second); });
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

bool CKivDSDicomAttribute::CreateSingleFrameCopy(int frame, CKivDSDicomAttribute** out) const
{
    const Operation op(L"CKivDSDicomAttribute::CreateSingleFrameCopy");
    if (!out)
        return op.Fail(L"Failed to create new DICOM attribute object");
    std::unique_ptr<CKivDSDicomAttribute> copy;
    if (!IsMultiFrame()) {
        copy = NewPlainCopy();
        if (!copy)
            return op.Fail(L"Failed to create new DICOM attribute object");
        *out = copy.release();
        return true;
    }
    int position = 0;
    if (!m_pFrameRange->GetPosition(frame, &position)) {
        *out = nullptr;
        return true;
    }
    copy.reset(new (std::nothrow) CKivDSDicomAttribute(false, false));
    if (!copy)
        return op.Fail(L"Failed to create new DICOM attribute object");

    // One value holds an element a frame (or one element for all of them), several values are one a frame.
    // The frame's value is lent, not copied: InitFromValues makes the copy.
    SKivAGAttributeValue value = {};
    if (m_nNumberOfValues == 1) {
        value = m_pValues[0];
        const int elementSize = GetElementSize(value.eType);
        if (value.nCount != 1) {
            if (position < 0 || position >= value.nCount)
                return op.Fail(
                    L"Attempt to use invalid value index to access multiframe attribute non-character value");
            value.nCount = 1;
            value.pData += static_cast<std::ptrdiff_t>(position) * elementSize;
        }
    } else {
        if (position < 0 || position >= m_nNumberOfValues)
            return op.Fail(
                L"Attempt to use invalid value index to access multiframe attribute character value");
        value = m_pValues[position];
    }
    if (!copy->InitFromValues(m_ulTag, m_nRepresentation, 1, &value, false))
        return op.Fail(L"Failed to initialize single frame copy from data values");
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
