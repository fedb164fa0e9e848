// Values as text for display, and the dump's lines.
#include "attribute/DumpListener.h"
#include "tests/support/Attributes.h"
#include "tests/support/Hex.h"
#include "tests/support/Notation.h"

#include <climits>
#include <clocale>
#include <limits>
#include <locale>

namespace kivds::test {
namespace {

using Lines = std::vector<std::string>;

std::string Rendered(const CKivDSDicomAttribute& attribute, int bufferSize = 400)
{
    // In a block of exactly that size, so that a byte too many is noticed.
    const auto size = static_cast<std::size_t>(bufferSize);
    const std::unique_ptr<unsigned char[]> text(new unsigned char[size]);
    std::fill_n(text.get(), size, static_cast<unsigned char>('?'));
    attribute.GetValueAsString(0, bufferSize, text.get());
    EXPECT_EQ(text[size - 1], '\0');
    return reinterpret_cast<const char*>(text.get());
}

struct AttributeRenderTest : AttributeTest
{
    AttributeRenderTest()
    {
        SetDumpListener([](void* lines, const char* line) { static_cast<Lines*>(lines)->push_back(line); },
                        &m_Lines);
    }
    ~AttributeRenderTest() override { SetDumpListener(nullptr, nullptr); }
    Lines m_Lines;
};

TEST_F(AttributeRenderTest, EveryTypeAndRepresentationHasItsFormat)
{
    for (const auto& [representation, bytes, bufferSize, text] : Examples<Txt, Txt, int, Txt>("rendering"))
        EXPECT_EQ(Rendered(*Attribute(0x00280010, CodeOf(representation), Bytes(bytes)), bufferSize), text)
            << bytes;
    const double extremes[] = {std::numeric_limits<double>::lowest(), 5};
    const auto doubles = Attribute(1, FD, {reinterpret_cast<const char*>(extremes), sizeof extremes});
    EXPECT_EQ(Rendered(*doubles, 328).size(), 318u + 9);
    EXPECT_EQ(Rendered(*doubles, 318), "") << "the first does not fit, so the second is not tried";

    OpenAttribute attribute;
    for (int type = -1; type <= 8; ++type) { // no elements, or no type
        for (const int representation : {LO, OB, AT}) {
            attribute.InitEmpty(1, representation, false);
            attribute.Alloc(1, static_cast<tagEKivAGAttributeType>(type), 0);
            EXPECT_EQ(Rendered(attribute), type >= 1 && type <= 7 ? "" : "N/A ") << type;
        }
    }
    for (const int index : {-1, 1, INT_MIN, INT_MAX}) {
        unsigned char untouched[] = "untouched";
        attribute.GetValueAsString(index, sizeof untouched, untouched);
        ClaimEach({Of(L"GetValueAsString", L"Invalid input attribute index")});
        EXPECT_STREQ(reinterpret_cast<const char*>(untouched), "untouched");
    }
}

TEST_F(AttributeRenderTest, TheDumpHasAHeaderAndAValuesLine)
{
    const std::string x(300, 'x');
    const std::tuple<AttributePtr, const char*, std::string> rows[] = {
        {Attribute(0x00100020, LO, "ABC"), "Group: 16, Element 32, Repr: Long string Values: 1",
         "char / 1 ABC"},
        {Attribute(0xFFFEE00D, 33, "x"), "Group: 65534, Element 57357, Repr:  Values: 0", ""},
        {Attribute(1, -1, "x"), "Group: 0, Element 1, Repr:  N/A  Values: 0", ""},
        {PerFrame(0x00280010, {1, 512}), "Group: 40, Element 16, Repr: Unsigned short Values: 1",
         "u short / 1  1 512 "},
        {Attribute(2, PN, "A^B"), "Group: 0, Element 2, Repr: Person Name Values: 2", "char / 2 AB"},
        {Attribute(3, 12, x), "Group: 0, Element 3, Repr: Unlimited text Values: 1",
         "char / 1 " + x.substr(0, 199)}};
    for (const auto& [attribute, header, values] : rows) {
        Lines expected = {std::string("\n Attribute:  ") + header + " \n"};
        if (!values.empty())
            expected.push_back(values);
        m_Lines.clear();
        attribute->Dump();
        EXPECT_EQ(m_Lines, expected);
        EXPECT_EQ(attribute->DumpValuesInfo(), !values.empty());
    }
    m_Lines.clear();
    for (int type = 0; type < 9; ++type) {
        OpenAttribute typed;
        typed.Alloc(1, static_cast<tagEKivAGAttributeType>(type), 0);
        EXPECT_TRUE(typed.DumpValuesInfo());
    }
    EXPECT_EQ(
        m_Lines,
        Parts("N/A/ 1 N/A |char / 1 |short / 1 |u short / 1 |int / 1 |u int / 1 |float / 1 |double / 1 |\n"
              "N/A/ 1 N/A "));
}

TEST_F(AttributeRenderTest, TheDumpGoesThroughASubclassAndItsFrameRange)
{
    static Lines* s_pLines = &m_Lines;
    struct Range : CKivIPPRangeIDC
    {
        bool Dump() const override { return s_pLines->emplace_back("range").empty(); }
    };
    struct : OpenAttribute
    {
        void DumpDicomInfo() override { s_pLines->emplace_back("header"); }
        bool DumpValuesInfo() override { return s_pLines->emplace_back("values").empty(); }
    } attribute;
    const OtherFactory factory(std::make_unique<Range>());
    attribute.Dump();
    attribute.SetMultiFrameInfo(1, 2);
    attribute.Dump();
    EXPECT_EQ(m_Lines, (Lines{"header", "values", "header", "values", "range"}));
}

// The process's locale, of C (where there is such a one) and of C++, says comma and groups digits.
TEST_F(AttributeRenderTest, NumbersHaveThePointWhateverTheLocale)
{
    struct Comma : std::numpunct<char>
    {
        char do_decimal_point() const override { return ','; }
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\3"; }
    };
    const std::locale former = std::locale::global(std::locale(std::locale::classic(), new Comma));
    for (const char* name : {"de_DE.UTF-8", "de_DE", "fr_FR.UTF-8", "nl_NL.UTF-8"}) {
        if (std::setlocale(LC_ALL, name))
            break;
    }
    const auto number = Attribute(1, DS, "1234567.25\\2,5");
    const std::string text = Rendered(*number);
    number->DumpValuesInfo();
    std::setlocale(LC_ALL, "C");
    std::locale::global(former);
    EXPECT_EQ(text, "1234567.250000 2.000000 5.000000 ");
    EXPECT_EQ(m_Lines.at(0), "double / 1 " + text);
}

} // namespace
} // namespace kivds::test
