// Comparison, ordering and accumulation of attributes.
#include "attribute/CKivDSDicomAttribute.h"
#include "attribute/internal/FrameRange.h"
#include "attribute/internal/GatheredValues.h"
#include "foundation/internal/ElementTypes.h"
#include "foundation/internal/Operation.h"

#include <algorithm>
#include <limits>
#include <new>
#include <utility>

using kivds::GatheredValues;
using kivds::Operation;

bool operator==(const CKivDSDicomAttribute& a, const CKivDSDicomAttribute& b)
{
    if (&a == &b)
        return true;
    if (a.m_nNumberOfValues != b.m_nNumberOfValues ||
        !std::equal(a.m_pValues, a.m_pValues + a.m_nNumberOfValues, b.m_pValues))
        return false;
    const bool multiFrame = a.IsMultiFrame();
    return multiFrame == b.IsMultiFrame() &&
           (!multiFrame || kivds::SameFrames(*a.m_pFrameRange, *b.m_pFrameRange));
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

// Makes room for `total` records, those held included, which stay where they are in the order. Where many
// values are being gathered the room grows ahead of them, so that gathering n values moves each record a
// fixed number of times.
bool CKivDSDicomAttribute::ReserveRecords(std::int64_t total)
{
    constexpr std::int64_t most = std::numeric_limits<int>::max();
    if (total > most)
        return false;
    if (m_nNumberOfValues == 0) {
        Clean();
        return AllocAttributeValue(static_cast<int>(total));
    }
    if (m_pGathered && total <= m_pGathered->Capacity())
        return true;
    if (!m_pGathered && total >= GatheredValues::kWorthwhile)
        m_pGathered.reset(new (std::nothrow) GatheredValues);
    const int room = static_cast<int>(m_pGathered ? std::min(total + total / 2, most) : total);
    SKivAGAttributeValue* const larger = GetNewAttributeValueArray(room);
    if (!larger)
        return false;
    std::copy_n(m_pValues, m_nNumberOfValues, larger);
    ReleaseRecords();
    m_pValues = larger;
    if (m_pGathered)
        m_pGathered->SetCapacity(room);
    return true;
}

// Appends b's values: all of them when b must be replicated, else those that equal none of the values held
// before. b's values are not compared with one another.
void CKivDSDicomAttribute::AppendValues(const CKivDSDicomAttribute& b)
{
    const bool all = b.MustReplicate();
    const int held = m_nNumberOfValues;
    // An index also pays where many values meet many, once.
    constexpr std::int64_t manyPairs =
        std::int64_t{GatheredValues::kWorthwhile} * GatheredValues::kWorthwhile;
    if (!all && !m_pGathered && std::int64_t{held} * b.m_nNumberOfValues >= manyPairs)
        m_pGathered.reset(new (std::nothrow) GatheredValues);
    const bool indexed = !all && m_pGathered && m_pGathered->Index(m_pValues, held);
    const auto isHeld = [&](const SKivAGAttributeValue& value) {
        return indexed ? m_pGathered->Contains(m_pValues, value)
                       : std::find(m_pValues, m_pValues + held, value) != m_pValues + held;
    };
    int total = held;
    for (int j = 0; j < b.m_nNumberOfValues; ++j) {
        const SKivAGAttributeValue& value = b.m_pValues[j];
        if (!all && isHeld(value))
            continue;
        if (total == held && !ReserveRecords(std::int64_t{held} + b.m_nNumberOfValues - j)) {
            Operation(L"CKivDSDicomAttribute::operator +=")
                .Report(all ? L"Failed to allocate new array of attribute values"
                            : L"Failed to allocate new attribute value array");
            return;
        }
        if (!CopyAttributeValue(&value, &m_pValues[total], held + j) && kivds::HasBytes(value)) {
            while (total > held) { // memory ran out: all of b's values or none
                DeleteAttributeValue(m_pValues[--total]);
                m_pValues[total] = {};
            }
            if (held == 0)
                Clean();
            return;
        }
        ++total;
    }
    m_nNumberOfValues = total;
}
