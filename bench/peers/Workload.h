// What every toolkit works on, the same for all: elements as a file holds them (tag, value representation,
// bytes of the value field), and the digest of the values that a toolkit read, by which the columns are
// checked against one another. Plain data of the caller.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kivds::peers {

/// The value representations that occur (PS3.5 6.2); sequences do not.
// clang-format off
enum class Vr : std::uint8_t
{
    AE, AS, AT, CS, DA, DS, DT, FD, FL, IS, LO, LT, OB, OW, PN, SH, SL, SS, ST, TM, UI, UL, UN, US, UT
};
// clang-format on
constexpr std::string_view kVrNames[] = {"AE", "AS", "AT", "CS", "DA", "DS", "DT", "FD", "FL",
                                         "IS", "LO", "LT", "OB", "OW", "PN", "SH", "SL", "SS",
                                         "ST", "TM", "UI", "UL", "UN", "US", "UT"};

constexpr std::string_view NameOf(Vr vr)
{
    return kVrNames[static_cast<std::size_t>(vr)];
}
/// False when the name is none of them.
bool VrNamed(std::string_view name, Vr& vr);
constexpr bool IsText(Vr vr)
{
    switch (vr) {
    case Vr::AT:
    case Vr::FD:
    case Vr::FL:
    case Vr::OB:
    case Vr::OW:
    case Vr::SL:
    case Vr::SS:
    case Vr::UL:
    case Vr::UN:
    case Vr::US:
        return false;
    default:
        return true;
    }
}
/// Bytes of one number of a binary value; 1 for text.
std::size_t UnitOf(Vr vr);

/// A text without what pads it to an even length (PS3.5 6.2).
inline std::string_view WithoutPadding(std::string_view text)
{
    while (!text.empty() && (text.back() == ' ' || text.back() == '\0'))
        text.remove_suffix(1);
    return text;
}

struct Element
{
    std::uint32_t m_Tag;
    Vr m_Vr;
    std::string m_Field; // of even length, numbers little-endian (PS3.5 7.1.1)

    std::string_view Unpadded() const { return IsText(m_Vr) ? WithoutPadding(m_Field) : m_Field; }
};

/// The elements of one data set, in ascending tag order.
using DataSet = std::vector<Element>;

/// The data sets that the program kivds_peer_elements took from DICOM files.
std::vector<DataSet> LoadDataSets(const std::string& path);
void SaveDataSets(const std::string& path, const std::vector<DataSet>& dataSets);

/// `count` data sets made of those given, over and over, each with an Instance Number (0020,0013) of its own.
std::vector<DataSet> Cycle(const std::vector<DataSet>& dataSets, std::size_t count);

/// `count` elements, tags from `first` on and two apart; values of several representations that say their tag
/// and `variant`.
DataSet MakeElements(std::uint32_t first, std::size_t count, int variant = 0);
/// The elements that each image of a series holds besides those that all share.
DataSet MakeVaryingElements(int image);
/// One element of `count` values.
Element MakeValues(Vr vr, std::size_t count);
Element MakeBytes(std::size_t size);

/// Collects what was read. Equal digests mean equal work.
class Digest
{
public:
    void Number(double number)
    {
        ++m_nNumbers;
        m_Sum += number;
    }
    void Text(std::string_view text)
    {
        ++m_nTexts;
        Add(text);
    }
    void Bytes(const void* bytes, std::size_t size) { Add({static_cast<const char*>(bytes), size}); }
    template <class T>
    void Numbers(const T* numbers, std::size_t count)
    {
        for (std::size_t i = 0; i < count; ++i)
            Number(static_cast<double>(numbers[i]));
    }
    /// Numbers, their sum, texts, characters, and a sum over the texts' ends.
    std::string ToString() const;

private:
    void Add(std::string_view text)
    {
        m_nCharacters += text.size();
        if (!text.empty())
            m_Ends += static_cast<unsigned char>(text.front()) * 3U + static_cast<unsigned char>(text.back());
    }

    std::uint64_t m_nNumbers = 0;
    std::uint64_t m_nTexts = 0;
    std::uint64_t m_nCharacters = 0;
    std::uint64_t m_Ends = 0;
    double m_Sum = 0;
};

/// What a user writes who wants the values of a text that a toolkit gives as text: strings without padding,
/// the components of names, the numbers in dates, times and ages. DS and IS are left to the toolkits.
void ReadText(Vr vr, std::string_view field, Digest& digest);

} // namespace kivds::peers
