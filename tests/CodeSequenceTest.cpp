// The code sequence attribute: its records and the values made of them.
#include "attribute/CKivDSCodeSequenceAttribute.h"

#include "tests/support/Attributes.h"

#include <cstddef>

namespace kivds::test {
namespace {

using Info = tagSKivDSCodeSequenceAttributeInfo;
struct Codes : CKivDSCodeSequenceAttribute
{
    using Base = CKivDSCodeSequenceAttribute;
    using Base::Base;
    using Base::CleanLocal;
    using Base::ConvertCodeSequenceInfoToValue;
    using Base::ConvertSynonymToValue;
    using Base::CopyLocal;
};

struct CodeSequenceTest : AttributeTest
{
    /// The records' code values, and the values with their indices: "A B | [left]0 [right]1".
    static std::string All(const CKivDSCodeSequenceAttribute& codes)
    {
        std::string text;
        for (int i = 0; const auto* code = codes.GetCodePtr(i); ++i)
            text += std::string(code->szCodeValue) + ' ';
        text += '|';
        for (int i = 0; const auto* value = codes.GetValuePtr(i); ++i)
            text += " [" + std::string(value->pData) + ']' + std::to_string(value->nInSequenceIndex);
        return text;
    }
    static Report OfCodes(const wchar_t* message)
    {
        return {L"CKivDSCodeSequenceAttribute::operator +=", message, 0};
    }
    const Info m_A = Code("A", "DCM", "Left breast"), m_B = Code("B", "DCM", "");
};

TEST_F(CodeSequenceTest, ARecordMakesOneValueOfItsMeaning)
{
    const Codes codes(0x000E0005, m_A), empty, flags(true, true);
    unsigned long tag = 0;
    EXPECT_TRUE(codes.GetTag(&tag) && tag == 0x000E0005 && codes.GetDicomRepresentation() == CS);
    EXPECT_TRUE(codes.GetType() == 1 && codes.MustReplicate() && !codes.IsPrivate());
    EXPECT_TRUE(All(codes) == "A | [Left breast]0" && codes.GetNumberOfCodes() == 1 && !codes.GetCodePtr(-1));
    EXPECT_TRUE(!empty.IsPrivate() && !empty.MustReplicate() && flags.IsPrivate() && flags.MustReplicate());
    Info unterminated = m_A;
    std::memset(&unterminated, 'x', sizeof unterminated); // every text is ended within its field
    EXPECT_EQ(Codes(1, unterminated).GetValuePtr(0)->nCount, 65);
    EXPECT_EQ(Stream(Codes(1, unterminated)).size(), 31u + 65 + 8 + 40 + 3 * 32 + 64 + 2 * 16 + 2 * 26 + 64);
    SKivAGAttributeValue values[2] = {};
    codes.ConvertCodeSequenceInfoToValue(m_A, -3, values[0]);
    codes.ConvertSynonymToValue("Left breast", -3, values[1]);
    for (SKivAGAttributeValue& value : values) {
        EXPECT_TRUE(value.nCount == 12 && value.eType == eAttrChar && value.nInSequenceIndex == -3);
        EXPECT_STREQ(value.pData, "Left breast");
        EXPECT_TRUE(codes.DeleteAttributeValue(value));
    }
}

TEST_F(CodeSequenceTest, RecordsAreEqualByTheirIdentityAlone)
{
    Info described = Code("A", "DCM", "Right"), version = m_A;
    std::strcpy(described.szContextIdentifier, "1");
    described.nContextGroupExtensionFlag = 1;
    std::strcpy(version.szCodingSchemeVersion, "2");
    const Info full = Code(std::string(32, 'v'), std::string(32, 's'), "");
    const Info shorter = Code(std::string(32, 'v'), std::string(31, 's'), "");
    const std::tuple<Info, Info, bool> rows[] = {{m_A, described, true}, {m_A, version, false},
                                                 {m_A, m_B, false},      {m_A, Code("A", "SNM", ""), false},
                                                 {full, shorter, false}, {full, full, true}};
    for (const auto& [first, second, equal] : rows) {
        Codes a(1, first), b(2, second); // the tag takes no part
        EXPECT_TRUE((a == b) == equal && (a != b) == !equal) << first.szCodeValue << second.szCodeValue;
    }
    Codes ab(1, m_A), ba(1, m_B), empty, none;
    ab += Codes(1, m_B);
    ba += Codes(1, m_A);
    EXPECT_TRUE(ab != ba && ab == ab && empty == none && empty != ab);
}

TEST_F(CodeSequenceTest, MergingAppendsRecordsAndMakesTheValuesAnew)
{
    Codes a(7, m_A), ab(7, m_A);
    ab += Codes(7, m_B);
    EXPECT_EQ(&(a += ab), &a);
    a += a;
    a += Codes(8, m_B);
    ClaimEach({OfCodes(L"Attempt to add code sequence attributes of different DICOM tags")});
    EXPECT_EQ(All(a), "A A B | [Left breast]0 [Left breast]1 []2");
    Codes plain(7, m_A), none; // values that are not its records'
    none.InitEmpty(7, CS, false);
    Value other({'L', 'e', 'f', 't', ' ', 'b', 'r', 'e', 'a', 's', 't', '1', '2', '3', '4', '5', '6'});
    plain.InitFromValues(7, CS, 1, &other.Record(), false);
    plain += none;
    EXPECT_EQ(All(plain), "A | [Left breast]0");
    plain.CleanLocal();
    plain += none;
    EXPECT_EQ(All(plain), "|") << "no records, no values";
    EXPECT_FALSE(plain.DumpValuesInfo());
}

TEST_F(CodeSequenceTest, CopiesHoldTheirOwnRecords)
{
    Codes source(7, m_A);
    source += Codes(7, m_B);
    source.SetMultiFrameInfo(1, 2);
    Codes copy(source), assigned(8, m_B);
    Codes& self = assigned = source;
    assigned = self;
    source.CleanLocal();
    source.Clean();
    for (const Codes* made : {&copy, &assigned})
        EXPECT_TRUE(All(*made) == "A B | [Left breast]0 []1" && made->GetType() == 1 && made->IsMultiFrame());
    copy.CopyLocal(assigned);
    EXPECT_EQ(copy.GetNumberOfCodes(), 4);
    static_cast<CKivDSDicomAttribute&>(assigned) = OpenAttribute();
    EXPECT_EQ(assigned.GetType(), 1) << "the type tells the class";
}

} // namespace
} // namespace kivds::test
