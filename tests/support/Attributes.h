// What the attribute's tests share: their fixture, an attribute whose protected operations can be called,
// value records, bytes without a byte to spare, and a scope item factory that gives what it is told to.
#pragma once

#include "foundation/internal/ElementTypes.h"
#include "platform/CKivIPPScopeItemFactory.h"
#include "tests/support/Build.h"
#include "tests/support/FailingNew.h"
#include "tests/support/GuardedBytes.h"
#include "tests/support/Reports.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

namespace kivds::test {

/// A report of the attribute's `operation`, named without the class.
inline Report Of(const std::wstring& operation, const std::wstring& message, int code = 0)
{
    return {L"CKivDSDicomAttribute::" + operation, message, code};
}
inline const Report kOtherTypes{L"operator <",
                                L"Attempt to quantitatively compare attribute values of different type", 1};

class AttributeTest : public ReportTest
{
protected:
    /// Claims these reports, and that there is no other.
    void ClaimEach(const std::vector<Report>& reports)
    {
        for (const Report& report : reports)
            Claim(report.m_Function, report.m_Message, report.m_nCode);
        EXPECT_TRUE(NothingReported());
    }
};

/// An attribute whose protected operations and members are reachable.
struct OpenAttribute : CKivDSDicomAttribute
{
    using Base = CKivDSDicomAttribute;
    explicit OpenAttribute(bool isPrivate = false, bool mustReplicate = false)
        : Base(isPrivate, mustReplicate)
    {
    }
    using Base::operator=;
    // clang-format off
    using Base::Alloc;                using Base::Attribute2Dicom;       using Base::Convert2Age;
    using Base::Convert2Date;         using Base::Convert2DateTime;      using Base::Convert2Double;
    using Base::Convert2Int;          using Base::Convert2PersonName;    using Base::Convert2String;
    using Base::Convert2Time;         using Base::CopyAttributeValue;    using Base::Deserialize;
    using Base::Dicom2Attribute;      using Base::GetSize;               using Base::InternalConvert2Date;
    using Base::InternalConvert2Time; using Base::IsPreallocatedData;    using Base::MakePixelDataAttribute;
    using Base::Serialize;            using Base::SetDataElementType;    using Base::m_bPreallocatedData;
    using Base::m_nType;              using Base::m_pFrameRange;
    // clang-format on
};

/// The parts of a text between bars; a line break and the blanks behind it are not meant.
inline std::vector<std::string> Parts(std::string_view text)
{
    std::vector<std::string> parts(1);
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\n')
            i = text.find_first_not_of(' ', i + 1) - 1;
        else if (text[i] == '|')
            parts.emplace_back();
        else
            parts.back() += text[i];
    }
    return parts;
}

/// A value record with elements of its own.
class Value
{
public:
    template <class T>
    Value(std::initializer_list<T> elements, int index = 0)
        : m_Block({reinterpret_cast<const char*>(elements.begin()), elements.size() * sizeof(T)}),
          m_Record{static_cast<int>(elements.size()), ElementTypeOf<T>::value, index, m_Block.Data()}
    {
    }
    SKivAGAttributeValue& Record() { return m_Record; }
    operator const SKivAGAttributeValue&() const { return m_Record; }

private:
    Exact m_Block;
    SKivAGAttributeValue m_Record; // without const: the operations take it so
};

/// A UL attribute with one value for each of these elements; the in-sequence indices are `index`, `index +
/// step`, ...
inline std::unique_ptr<OpenAttribute> Values(std::initializer_list<unsigned> elements, int index = 0,
                                             int step = 0, unsigned long tag = 0x00280010,
                                             bool mustReplicate = false)
{
    auto attribute = std::make_unique<OpenAttribute>();
    std::vector<Value> values;
    std::vector<SKivAGAttributeValue> records;
    for (const unsigned element : elements) {
        values.push_back(Value({element}, index + step * static_cast<int>(values.size())));
        records.push_back(values.back());
    }
    attribute->InitEmpty(tag, UL, mustReplicate);
    if (!records.empty())
        attribute->InitFromValues(tag, UL, static_cast<int>(records.size()), records.data(), false);
    return attribute;
}

/// While it lives, scope items come from this factory: `made` when a new one is asked for first, then none.
class OtherFactory : public CKivIPPScopeItemFactory
{
public:
    explicit OtherFactory(std::unique_ptr<CKivIPPScopeItemC> made = nullptr) : m_Made(std::move(made))
    {
        g_pItemFactory = this;
    }
    ~OtherFactory() override { g_pItemFactory = m_Former; }
    OtherFactory(const OtherFactory&) = delete;
    OtherFactory& operator=(const OtherFactory&) = delete;
    CKivIPPScopeItemC* Create(const _GUID&) override { return m_Made.release(); }
    CKivIPPScopeItemC* Clone(const CKivIPPScopeItemC*) override { return nullptr; }

private:
    CKivIPPScopeItemFactory* const m_Former = g_pItemFactory;
    std::unique_ptr<CKivIPPScopeItemC> m_Made;
};

} // namespace kivds::test
