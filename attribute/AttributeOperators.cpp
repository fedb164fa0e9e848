// Comparison, ordering and accumulation of attributes.
#include "attribute/CKivDSDicomAttribute.h"
#include "attribute/internal/GatheredValues.h"
#include "foundation/internal/Operation.h"

#include <algorithm>
#include <limits>
#include <new>
#include <utility>
#include <vector>

using kivds::GatheredValues;
using kivds::Operation;

bool operator==(const CKivDSDicomAttribute& a, const CKivDSDicomAttribute& b)
{
    if (&a == &b)
        return true;
    if (a.m_nNumberOfValues != b.m_nNumberOfValues ||
        !std::equal(a.m_pValues, a.m_pValues + a.m_nNumberOfValues, b.m_pValues))
        return false;
    if (!a.IsMultiFrame() || !b.IsMultiFrame())
        return a.IsMultiFrame() == b.IsMultiFrame();
    return *a.m_pFrameRange == *b.m_pFrameRange;
}

bool operator!=(const CKivDSDicomAttribute& a, const CKivDSDicomAttribute& b)
{
    return !(a == b);
}

bool CKivDSDicomAttribute::operator==(const CKivDSDicomAttribute& other)
{
    return std::as_const(*this) == other;
}

bool CKivDSDicomAttribute::operator!=(const CKivDSDicomAttribute& other)
{
    return !(std::as_const(*this) == other);
}

bool operator<(const CKivDSDicomAttribute& a, const CKivDSDicomAttribute& b)
{
    if (&a == &b)
        return false;
    if (a.IsMultiFrame() || b.IsMultiFrame())
        Operation(L"operator <").Report(L"Attempt to quantitatively compare multiframe attributes", 1);
    const int common = std::min(a.m_nNumberOfValues, b.m_nNumberOfValues);
    for (int i = 0; i < common; ++i) {
        if (a.m_pValues[i] < b.m_pValues[i])
            return true;
        if (a.m_pValues[i] != b.m_pValues[i])
            return false;
    }
    return a.m_nNumberOfValues < b.m_nNumberOfValues;
}

bool operator>=(const CKivDSDicomAttribute& a, const CKivDSDicomAttribute& b)
{
    return !(a < b);
}

CKivDSDicomAttribute& CKivDSDicomAttribute::operator+=(const CKivDSDicomAttribute& b)
{
    const bool alike = m_ulTag == b.m_ulTag && m_nRepresentation == b.m_nRepresentation;
    if (this != &b && alike && !IsMultiFrame() && !b.IsMultiFrame() && b.m_nNumberOfValues > 0)
        AppendValues(b);
    return *this;
}

// The positions of b's values that are to be appended: all of them when b must be replicated, else those that
// equal none of the values held. b's values are not compared with one another. May throw.
std::vector<int> CKivDSDicomAttribute::FreshValuesOf(const CKivDSDicomAttribute& b)
{
    const bool indexed =
        m_pGathered && !b.MustReplicate() && m_pGathered->Index(m_pValues, m_nNumberOfValues);
    const auto isHeld = [&](const SKivAGAttributeValue& value) {
        if (b.MustReplicate())
            return false;
        if (indexed)
            return m_pGathered->Contains(m_pValues, value);
        return std::find(m_pValues, m_pValues + m_nNumberOfValues, value) != m_pValues + m_nNumberOfValues;
    };
    std::vector<int> fresh;
    for (int j = 0; j < b.m_nNumberOfValues; ++j) {
        if (!isHeld(b.m_pValues[j]))
            fresh.push_back(j);
    }
    return fresh;
}

// Makes room for `total` records, those held included, which stay where they are in the order. Where many
// values are being gathered the room grows ahead of them, so that gathering n values moves each record a
// fixed number of times.
bool CKivDSDicomAttribute::ReserveRecords(int total)
{
    if (m_nNumberOfValues == 0) {
        Clean();
        return AllocAttributeValue(total);
    }
    if (m_pGathered && total <= m_pGathered->Capacity())
        return true;
    if (!m_pGathered && total >= GatheredValues::kWorthwhile)
        m_pGathered.reset(new (std::nothrow) GatheredValues);
    const int ahead = m_pGathered ? std::min(total / 2, std::numeric_limits<int>::max() - total) : 0;
    SKivAGAttributeValue* const larger = GetNewAttributeValueArray(total + ahead);
    if (!larger)
        return false;
    std::copy_n(m_pValues, m_nNumberOfValues, larger);
    if (m_pValues != &m_InlineValue)
        delete[] m_pValues;
    m_pValues = larger;
    if (m_pGathered)
        m_pGathered->SetCapacity(total + ahead);
    return true;
}

void CKivDSDicomAttribute::AppendValues(const CKivDSDicomAttribute& b)
{
    const Operation op(L"CKivDSDicomAttribute::operator +=");
    const wchar_t* const noMemory = b.MustReplicate() ? L"Failed to allocate new array of attribute values"
                                                      : L"Failed to allocate new attribute value array";
    std::vector<int> fresh;
    const bool chosen = op.Guard(noMemory, [&] {
        fresh = FreshValuesOf(b);
        return true;
    });
    if (!chosen || fresh.empty())
        return;
    const int held = m_nNumberOfValues;
    const std::int64_t total = std::int64_t{held} + static_cast<std::int64_t>(fresh.size());
    if (total > std::numeric_limits<int>::max() || !ReserveRecords(static_cast<int>(total)))
        return op.Report(noMemory);
    SKivAGAttributeValue* record = m_pValues + held;
    for (const int j : fresh) {
        const SKivAGAttributeValue& value = b.m_pValues[j];
        if (!CopyAttributeValue(&value, record, held + j) && value.pData) {
            // Memory ran out: all of b's values or none.
            for (; record != m_pValues + held; --record)
                DeleteAttributeValue(record[-1]);
            std::fill_n(m_pValues + held, fresh.size(), SKivAGAttributeValue{});
            return;
        }
        ++record;
    }
    m_nNumberOfValues = static_cast<int>(total);
}
