// From an element's bytes to values: the dispatch by representation, dates and times, texts and numbers.
#include "tests/support/Attributes.h"
#include "tests/support/Hex.h"
#include "tests/support/Notation.h"

#include <climits>
#include <map>
#include <random>
#include <sstream>

namespace kivds::test {
namespace {

struct AttributeInitTest : AttributeTest
{
    /// Initialises from a text.
    void Expect(int representation, int expected, const std::string& source, const std::string& values,
                const std::vector<Report>& reports = {})
    {
        SCOPED_TRACE(source);
        const Exact text(source); // what stands behind is not read
        OpenAttribute attribute;
        EXPECT_TRUE(attribute.InitFromDicomData(1, representation, text.Size(), text.Data(), nullptr, false,
                                                true, 3, expected)); // also when the conversion fails
        EXPECT_TRUE(attribute.MustReplicate() && !attribute.IsPrivate());
        EXPECT_EQ(attribute.GetDicomRepresentation(), representation);
        ClaimEach(reports);
        EXPECT_EQ(Text(attribute), values);
        for (int i = 0; const auto* value = attribute.GetValuePtr(i); ++i)
            EXPECT_EQ(value->nInSequenceIndex, 3);
    }
};

TEST_F(AttributeInitTest, TextsGiveTheirValues)
{
    for (const Txt table : {"conversions", "other conversions"}) {
        for (const auto& [representation, expectedCount, text, values] : Examples<Txt, int, Txt, Txt>(table))
            Expect(CodeOf(representation), expectedCount, text, values);
    }
}

TEST_F(AttributeInitTest, TextsThatDoNotConvertAreReported)
{
    std::map<std::string, Report> known;
    for (const auto& [word, function, message, code] :
         Examples<Txt, std::wstring, std::wstring, int>("conversion reports"))
        known[word] = Of(function, message, code);
    for (const auto& [representation, expectedCount, text, values, words] :
         Examples<Txt, int, Txt, Txt, Txt>("failed conversions")) {
        std::vector<Report> reports;
        std::istringstream all(words);
        for (std::string word; all >> word;)
            reports.push_back(known.at(word));
        Expect(CodeOf(representation), expectedCount, text, values, reports);
    }
    OpenAttribute attribute; // what the conversions themselves answer
    SKivAGAttributeValue two = {2, eAttrInt, 0, nullptr};
    EXPECT_TRUE(attribute.Convert2Date("20240101\\2 ", 11, 2)) << "a piece failed, the date did not";
    EXPECT_FALSE(attribute.Convert2Date("2", 1, 1) || attribute.Convert2Time("101530.-5", 9, 1) ||
                 attribute.Convert2DateTime("202", 3) || attribute.Convert2Double("x", 1) ||
                 attribute.InternalConvert2Date("20240101", 8, two) ||
                 attribute.InternalConvert2Time("10", 2, two));
    ClaimEach({known["date"], known["date-piece"], known["date"], known["fraction"], known["decimal"],
               known["date"], known["time"]});
    EXPECT_EQ(Text(attribute), "") << "no number: the values are lost";
}

TEST_F(AttributeInitTest, AConversionWithoutTextSaysSo)
{
    for (const auto& [representation, function] : {std::pair(AS, L"Convert2Age"),
                                                   {DA, L"Convert2Date"},
                                                   {TM, L"Convert2Time"},
                                                   {DT, L"Convert2DateTime"},
                                                   {DS, L"Convert2Double"},
                                                   {IS, L"Convert2Int"},
                                                   {CS, L"Convert2String"},
                                                   {PN, L"Convert2PersonName"}}) {
        const auto attribute = Values({7, 8, 9});
        for (const auto& [text, length] : {std::pair("1", 0), {"1", -1}, {nullptr, 4}}) {
            attribute->Dicom2Attribute(representation, length, text, 2);
            if (text || representation != AS) // nothing to look at: no age
                ClaimEach({Of(function, L" Bad input parameters ")});
        }
        EXPECT_TRUE(representation != AS || attribute->Dicom2Attribute(AS, 4, "\00045Y", 1)); // nor here
        EXPECT_EQ(Text(*attribute), "[7] [8] [9]");
    }
    OpenAttribute attribute;
    EXPECT_FALSE(attribute.Convert2String("1", INT_MAX, "\\", 1));
    ClaimEach({Of(L"Convert2String", L" Bad input parameters ")});
    EXPECT_TRUE(attribute.Convert2String("A,B;C\\D", 7, ",;", 2) && Text(attribute) == "[A] [B] [C\\D]");
    EXPECT_EQ(attribute.GetValuePtr(2)->nCount, 4) << "the NUL is counted";
    EXPECT_TRUE(attribute.Convert2String("A\\B", 3, "\\", 0) && Text(attribute) == "[A\\B]");
}

/// Whether the first value is these numbers to the bit, but for which NaN it is; without numbers there is
/// none.
template <class Number>
bool Holds(const OpenAttribute& attribute, const std::vector<Number>& numbers)
{
    const SKivAGAttributeValue* const value = attribute.GetValuePtr(0);
    if (!value || numbers.size() != static_cast<std::size_t>(value->nCount))
        return !value && numbers.empty();
    std::vector<Number> held(numbers.size());
    std::memcpy(held.data(), value->pData, held.size() * sizeof(Number));
    return std::equal(held.begin(), held.end(), numbers.begin(), [](const Number& a, const Number& b) {
        return std::memcmp(&a, &b, sizeof a) == 0 || (a != a && b != b);
    });
}

// strtod and strtol are the rule, but for the locale and for reading past the text.
TEST_F(AttributeInitTest, NumbersAreReadAsTheStandardReadsThem)
{
    const std::string zeros(400, '0');
    std::vector<std::string> texts = Parts(
        R"(0|-0|+5|-5|+ 5|--5|-+5|0.1|1,5|1_000|1e|1e+|1e+x|1.e2|.5|5.|5.\6|-.5e-1|.|e5|7 |00012|1e308|1e309|
                 -1e309|4.9e-324|2e-324|-1e-400|1e5000000000000|1e-5000000000000|123456789012345678901234567890|
                 9007199254740993|0x1p3|0x|0xg|0x.8|-0X1.8P+1|0x1p-2000|0x1p2000|inf|-INFINITY|infinit|nan|nan(1)|
                 nan(|2147483648|-2147483649)");
    for (const std::string& text :
         {"\v\f\r 7" + zeros, zeros + "1e5", "0." + zeros + "1e405", "1" + zeros + "e-400"})
        texts.push_back(text);
    // Each of up to 16 digits, with the point at each place: the nearest double, not one rounded twice, which
    // one in thousands would be.
    std::mt19937_64 random(1);
    std::string plain;
    for (std::uint64_t most = 10; most <= 10'000'000'000'000'000; most *= 10) {
        for (int i = 0; i < 4000; ++i) {
            std::string digits = std::to_string(random() % most);
            plain += digits.insert(static_cast<std::size_t>(i) % (digits.size() + 1), ".") + '\\';
        }
    }
    texts.push_back(plain);
    // One character stands between two numbers, whatever it is.
    const auto numbersIn = [](const std::string& text, auto read) {
        std::vector<decltype(read(nullptr, nullptr))> numbers;
        char* behind = nullptr;
        for (const char* p = text.c_str(); p < text.c_str() + text.size(); p = behind + 1) {
            const auto number = read(p, &behind);
            if (behind == p)
                break;
            numbers.push_back(number);
        }
        return numbers;
    };
    for (const std::string& source : texts) {
        SCOPED_TRACE(source);
        const Exact text(source);
        const auto decimals = numbersIn(source, [](const char* p, char** e) { return std::strtod(p, e); });
        const auto integers = numbersIn(source, [](const char* p, char** end) {
            return static_cast<int>(std::clamp<long long>(std::strtoll(p, end, 10), INT_MIN, INT_MAX));
        });
        OpenAttribute decimal, integer;
        EXPECT_EQ(decimal.Convert2Double(text.Data(), text.Size()), !decimals.empty());
        EXPECT_EQ(integer.Convert2Int(text.Data(), text.Size()), !integers.empty());
        EXPECT_EQ(ClaimAll(), std::size_t{decimals.empty()} + std::size_t{integers.empty()});
        EXPECT_TRUE(Holds(decimal, decimals) && Holds(integer, integers));
    }
}

TEST_F(AttributeInitTest, BinaryValuesAreTakenAsTheyStand)
{
    const std::tuple<int, int, int, bool> rows[] = {// representation, length, elements, inside the attribute
                                                    {US, 7, 3, true},
                                                    {US, 16, 8, false},
                                                    {SL, 6, 1, true},
                                                    {FD, 15, 1, true},
                                                    {OB, 1, 1, true}};
    for (const auto& [representation, length, elements, inside] : rows) {
        std::string bytes;
        for (int i = 0; i < length; ++i)
            bytes += static_cast<char>(i * 37 % 251);
        const Exact exact(bytes);
        OpenAttribute attribute;
        EXPECT_TRUE(attribute.Dicom2Attribute(representation, exact.Size(), exact.Data(), 1));
        const SKivAGAttributeValue& value = *attribute.GetValuePtr(0);
        EXPECT_TRUE(value.nCount == elements && std::memcmp(value.pData, bytes.data(), bytes.size()) == 0);
        EXPECT_TRUE(attribute.IsPreallocatedData(value.pData) == inside &&
                    attribute.m_bPreallocatedData == inside);
    }
    const auto held = Values({7});
    const std::pair<int, int> tooShort[] = {{US, 1}, {FL, 3}, {FD, 7}, {OB, 0}, {OB, -1}};
    for (const auto& [representation, length] : tooShort) {
        EXPECT_TRUE(held->Dicom2Attribute(representation, length, "12345678", 1));
        Claim(L"Convert2VectOfScalars", L"Invalid input parameter");
        EXPECT_TRUE(Text(*held) == "[7]" && held->GetValuePtr(0)->eType == eAttrUInt);
    }
    Refused(Convert2VectOfScalars<short>(nullptr, 2, held.get(), nullptr), L"Convert2VectOfScalars",
            L"Invalid input parameter");
}

TEST_F(AttributeInitTest, AnAttributeTakesItsOwnBytes)
{
    const AttributePtr name = Attribute(1, LO, "one\\two");
    const SKivAGAttributeValue second = *name->GetValuePtr(1);
    EXPECT_TRUE(name->InitFromDicomData(1, LO, second.nCount - 1, second.pData, nullptr, false, false, 0, 1));
    EXPECT_TRUE(name->SetValue(0, const_cast<SKivAGAttributeValue*>(name->GetValuePtr(0))));
    EXPECT_EQ(Text(*name), "[two]");
}

TEST_F(AttributeInitTest, PixelDataAndSequencesBecomePrivatePlaceholders)
{
    for (const bool flag : {false, true}) {
        OpenAttribute pixels(false, flag), sequence;
        EXPECT_TRUE(pixels.InitFromDicomData(0x7FE00010, 1000, 0, nullptr, nullptr, false, !flag, 5, 1));
        const SKivAGAttributeValue& value = *pixels.GetValuePtr(0);
        EXPECT_TRUE(value.eType == eAttrChar && value.nCount == 4 && pixels.IsPreallocatedData(value.pData));
        EXPECT_EQ(std::string(value.pData, 4), Bytes("10 00 E0 7F"));
        EXPECT_TRUE(pixels.IsPrivate() && pixels.m_bPreallocatedData && pixels.MustReplicate() == flag);
        EXPECT_TRUE(sequence.InitFromDicomData(0x00081140, SQ, 0, nullptr, nullptr, false, flag, 5, 1));
        EXPECT_TRUE(Text(sequence) == "[528704]" && sequence.GetValuePtr(0)->eType == eAttrUInt);
        EXPECT_TRUE(sequence.IsPrivate() && sequence.MustReplicate() == flag);
    }
    OpenAttribute attribute(true, true);
    for (const auto& [length, data] : {std::pair(0, "x"), {-1, "x"}, {1, nullptr}}) {
        EXPECT_FALSE(attribute.InitFromDicomData(9, 29, length, data, nullptr, false, false, 0, 1));
        ClaimEach({Of(L"InitFromDicomData", L" Bad input parameters ")});
    }
    EXPECT_TRUE(attribute.IsPrivate() && attribute.MustReplicate());
    EXPECT_EQ(attribute.GetDicomRepresentation(), 29);
}

struct Refusing : OpenAttribute // replaces the dispatch, and is asked for the way back
{
    bool Dicom2Attribute(int, int, const char*, int) override { return false; }
    bool Attribute2Dicom() override { return ++m_nAsked > 0; }
    int m_nAsked = 0;
};

TEST_F(AttributeInitTest, AToolkitsElementIsReadAtItsOffsets)
{
    OpenAttribute attribute(true, false);
    const auto init = [&](std::uint32_t tag, std::int32_t code, std::int32_t length, const char* data,
                          bool flag) {
        std::string record(156 + sizeof data, '\xEE');
        std::memcpy(&record[0], &tag, 4);
        std::memcpy(&record[4], &code, 4);
        std::memcpy(&record[152], &length, 4);
        std::memcpy(&record[156], &data, sizeof data);
        EXPECT_TRUE(attribute.InitFromDicomElement(1, record.data(), false, flag));
        EXPECT_TRUE(attribute.IsPrivate() == (tag == 0x7FE00010) && attribute.MustReplicate() == flag);
        EXPECT_EQ(attribute.GetDicomRepresentation(), code);
    };
    init(0x00080020, DA, 8, "20240229", true);
    EXPECT_TRUE(Text(attribute) == "[2024 2 29]" && attribute.GetValuePtr(0)->nInSequenceIndex == 0);
    init(0x00081140, SQ, 4, "----", false);
    EXPECT_EQ(Text(attribute), "[2024 2 29]") << "a sequence gets no placeholder here";
    init(0x00081140, CS, 0, nullptr, false);
    ClaimEach({Of(L"Convert2String", L" Bad input parameters ")});
    init(0x7FE00010, OW, 2, nullptr, true);
    EXPECT_EQ(attribute.GetValuePtr(0)->nCount, 4);
    char record[200] = {};
    EXPECT_FALSE(attribute.InitFromDicomElement(0, record, false, true) ||
                 attribute.InitFromDicomElement(1, nullptr, false, true));
    ClaimEach({2, Of(L"InitFromDicomElement", L" Bad input parameters ")});
    Refusing refusing;
    EXPECT_FALSE(refusing.InitFromDicomElement(1, record, false, false) ||
                 refusing.InitFromDicomData(1, CS, 1, "x", nullptr, false, false, 0, 1));
    ClaimEach({Of(L"InitFromDicomElement", L" Unable to initialize the attribute object "),
               Of(L"InitFromDicomData", L" Unable to initialize the attribute object ")});
}

TEST_F(AttributeInitTest, ReadyMadeValuesAreCopied)
{
    const Value one({1, 2, 3, 4}, 5), two({'A', '\0'}, -2);
    SKivAGAttributeValue records[] = {two, one, {1, eAttrInt, 0, nullptr}};
    OpenAttribute attribute(true, true);
    ASSERT_TRUE(attribute.InitFromValues(7, LO, 2, records, false));
    EXPECT_TRUE(attribute.GetValuePtr(0)->nInSequenceIndex == -2 &&
                attribute.GetValuePtr(1)->nInSequenceIndex == 5);
    EXPECT_TRUE(attribute.IsPrivate() && attribute.MustReplicate()) << "the flags stay";
    EXPECT_FALSE(attribute.InitFromValues(8, CS, 0, records, false) ||
                 attribute.InitFromValues(8, CS, 1, nullptr, false));
    EXPECT_EQ(attribute.GetDicomRepresentation(), LO);
    EXPECT_FALSE(attribute.InitFromValues(8, SQ, 1, records, false));
    EXPECT_EQ(attribute.GetDicomRepresentation(), SQ);
    EXPECT_EQ(Text(attribute), "[A] [1 2 3 4]");
    EXPECT_TRUE(attribute.InitFromValues(8, SL, 3, records, false)) << "a value without data is left empty";
    EXPECT_EQ(Text(attribute), "[A] [1 2 3 4] []");
    const Report badInput = Of(L"InitFromValues", L" Bad input parameters ");
    ClaimEach({badInput, badInput, Of(L"InitFromValues", L" Sequence type DICOM data values not supported "),
               Of(L"CopyAttributeValue", L"Invalid input buffer ")});
    EXPECT_TRUE(attribute.InitFromValues(8, SL, 1, &records[1], false) && !attribute.m_bPreallocatedData);
    records[1].eType = eAttrChar;
    records[1].nCount = 15;
    EXPECT_TRUE(attribute.InitFromValues(8, SL, 1, &records[1], false) && attribute.m_bPreallocatedData);
    Refusing asked;
    EXPECT_TRUE(asked.InitFromValues(1, SL, 1, records, false) && asked.m_nAsked == 0);
    EXPECT_TRUE(asked.InitFromValues(1, SL, 1, records, true) && asked.m_nAsked == 1);
    EXPECT_FALSE(attribute.Attribute2Dicom());
}

} // namespace
} // namespace kivds::test
