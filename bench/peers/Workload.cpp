#include "bench/peers/Workload.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace kivds::peers {

namespace {

constexpr std::uint32_t kInstanceNumber = 0x00200013;

template <class Use>
void ForEachPiece(std::string_view text, std::string_view separators, Use use)
{
    while (!text.empty()) {
        const std::size_t end =
            separators.size() == 1 ? text.find(separators.front()) : text.find_first_of(separators);
        const std::string_view piece = text.substr(0, end);
        if (!piece.empty())
            use(piece);
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
}

int Digits(std::string_view text, std::size_t at, std::size_t count)
{
    int number = 0;
    for (; count > 0 && at < text.size() && text[at] >= '0' && text[at] <= '9'; ++at, --count)
        number = number * 10 + (text[at] - '0');
    return number;
}

void ReadDate(std::string_view date, Digest& digest)
{
    digest.Number(Digits(date, 0, 4));
    digest.Number(Digits(date, 4, 2));
    digest.Number(Digits(date, 6, 2));
}

void ReadTime(std::string_view time, Digest& digest)
{
    digest.Number(Digits(time, 0, 2));
    digest.Number(Digits(time, 2, 2));
    digest.Number(Digits(time, 4, 2));
    digest.Number(Digits(time, 7, 6));
}

void ReadDateTime(std::string_view text, Digest& digest)
{
    const std::size_t offset = std::min(text.find_first_of("+-"), text.size());
    const std::string_view local = text.substr(0, offset);
    ReadDate(local, digest);
    ReadTime(local.substr(std::min<std::size_t>(8, local.size())), digest);
    const int sign = offset < text.size() && text[offset] == '-' ? -1 : 1;
    digest.Number(sign * Digits(text, offset + 1, 2));
    digest.Number(sign * Digits(text, offset + 3, 2));
}

void ReadAge(std::string_view age, Digest& digest)
{
    digest.Number(Digits(age, 0, 3));
    digest.Number(age.size() > 3 ? static_cast<unsigned char>(age[3]) : 0);
}

std::string Padded(Vr vr, std::string text)
{
    if (text.size() % 2 != 0)
        text += vr == Vr::UI || !IsText(vr) ? '\0' : ' ';
    return text;
}

Element TextElement(std::uint32_t tag, Vr vr, std::string text)
{
    return {tag, vr, Padded(vr, std::move(text))};
}

template <class T>
void Put(std::ostream& out, T number)
{
    out.write(reinterpret_cast<const char*>(&number), sizeof number); // read on the same machine
}

template <class T>
T Get(std::istream& in)
{
    T number{};
    if (!in.read(reinterpret_cast<char*>(&number), sizeof number))
        throw std::runtime_error("the file of elements is cut short");
    return number;
}

} // namespace

bool VrNamed(std::string_view name, Vr& vr)
{
    const auto* const found = std::find(std::begin(kVrNames), std::end(kVrNames), name);
    if (found == std::end(kVrNames))
        return false;
    vr = static_cast<Vr>(found - std::begin(kVrNames));
    return true;
}

std::size_t UnitOf(Vr vr)
{
    switch (vr) {
    case Vr::FD:
        return 8;
    case Vr::AT:
    case Vr::FL:
    case Vr::SL:
    case Vr::UL:
        return 4;
    case Vr::OW:
    case Vr::SS:
    case Vr::US:
        return 2;
    default:
        return 1;
    }
}

void SaveDataSets(const std::string& path, const std::vector<DataSet>& dataSets)
{
    std::ofstream out(path, std::ios::binary);
    Put(out, static_cast<std::uint32_t>(dataSets.size()));
    for (const DataSet& dataSet : dataSets) {
        Put(out, static_cast<std::uint32_t>(dataSet.size()));
        for (const Element& element : dataSet) {
            Put(out, element.m_Tag);
            Put(out, element.m_Vr);
            Put(out, static_cast<std::uint32_t>(element.m_Field.size()));
            out.write(element.m_Field.data(), static_cast<std::streamsize>(element.m_Field.size()));
        }
    }
    if (!out.flush())
        throw std::runtime_error("cannot write " + path);
}

std::vector<DataSet> LoadDataSets(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    std::vector<DataSet> dataSets(Get<std::uint32_t>(in));
    for (DataSet& dataSet : dataSets) {
        dataSet.resize(Get<std::uint32_t>(in));
        for (Element& element : dataSet) {
            element.m_Tag = Get<std::uint32_t>(in);
            element.m_Vr = Get<Vr>(in);
            element.m_Field.resize(Get<std::uint32_t>(in));
            in.read(element.m_Field.data(), static_cast<std::streamsize>(element.m_Field.size()));
        }
    }
    if (!in || dataSets.empty())
        throw std::runtime_error("no elements in " + path);
    return dataSets;
}

std::vector<DataSet> Cycle(const std::vector<DataSet>& dataSets, std::size_t count)
{
    std::vector<DataSet> cycled;
    for (std::size_t i = 0; i < count; ++i) {
        DataSet& dataSet = cycled.emplace_back(dataSets[i % dataSets.size()]);
        for (Element& element : dataSet) {
            if (element.m_Tag == kInstanceNumber)
                element = TextElement(kInstanceNumber, Vr::IS, std::to_string(i + 1));
        }
    }
    return cycled;
}

DataSet MakeElements(std::uint32_t first, std::size_t count, int variant)
{
    DataSet elements;
    for (std::size_t i = 0; i < count; ++i) {
        const auto tag = first + static_cast<std::uint32_t>(i) * 2;
        const std::string number = std::to_string(i % 1000 + 1);
        const std::string v = std::to_string(variant);
        switch (i % 8) {
        case 0:
            elements.push_back(TextElement(tag, Vr::LO, "Text " + number + " of " + v));
            break;
        case 1:
            elements.push_back(TextElement(tag, Vr::DS, number + ".25\\-" + v + ".5"));
            break;
        case 2:
            elements.push_back(TextElement(tag, Vr::CS, "CODE_" + number + "_" + v));
            break;
        case 3:
            elements.push_back(
                TextElement(tag, Vr::IS, std::to_string(i % 1000 + 1000U * static_cast<unsigned>(variant))));
            break;
        case 4:
            elements.push_back({tag, Vr::US, {static_cast<char>(i % 100), static_cast<char>(variant % 100)}});
            break;
        case 5:
            elements.push_back(TextElement(tag, Vr::UI, "1.2.826.0.1." + number + "." + v));
            break;
        case 6:
            elements.push_back(TextElement(tag, Vr::DA, "20" + std::to_string(10 + i % 80) + "0119"));
            break;
        default:
            elements.push_back(TextElement(tag, Vr::DS, number + "." + v));
            break;
        }
    }
    return elements;
}

DataSet MakeVaryingElements(int image)
{
    const std::string number = std::to_string(image + 1);
    const std::string padded = std::to_string(100000 + image);
    const std::string z = std::to_string(image) + ".25";
    constexpr std::uint32_t first = 0x00204000;
    return {
        TextElement(first, Vr::UI, "1.2.826.0.1.3680043.10.511.1." + number),
        TextElement(first + 2, Vr::TM, "10" + padded.substr(2, 2) + padded.substr(4, 2) + "." + padded),
        TextElement(first + 4, Vr::IS, number),
        TextElement(first + 6, Vr::DS, "-125.5\\-287.5\\" + z),
        TextElement(first + 8, Vr::DS, z),
        TextElement(first + 10, Vr::SH, "Slice " + number),
        TextElement(first + 12, Vr::LO, "Image " + number + " of the series"),
        TextElement(first + 14, Vr::IS, std::to_string(200000 + image)),
    };
}

Element MakeValues(Vr vr, std::size_t count)
{
    std::string text;
    for (std::size_t i = 0; i < count; ++i) {
        if (i > 0)
            text += '\\';
        const std::string number = std::to_string(10000 + i % 80000);
        switch (vr) {
        case Vr::DS:
            text += number.substr(0, 3) + "." + number.substr(3) + "25";
            break;
        case Vr::DA:
            text += "20" + number.substr(3) + "0119";
            break;
        case Vr::TM:
            text += "10" + number.substr(3) + "30.125";
            break;
        case Vr::PN:
            text += "Sample^Anna^" + number;
            break;
        default:
            text += number;
            break;
        }
    }
    return TextElement(0x00204010, vr, std::move(text));
}

Element MakeBytes(std::size_t size)
{
    std::string bytes(size, '\0');
    for (std::size_t i = 0; i < size; i += 64)
        bytes[i] = static_cast<char>(i / 64);
    return {0x00420011, Vr::OB, std::move(bytes)};
}

std::string Digest::ToString() const
{
    char sum[32];
    std::snprintf(sum, sizeof sum, "%.10g",
                  m_Sum); // the last bits depend on how exactly a toolkit reads decimals
    return std::to_string(m_nNumbers) + " numbers, sum " + sum + ", " + std::to_string(m_nTexts) +
           " texts, " + std::to_string(m_nCharacters) + " characters (" + std::to_string(m_Ends) + ")";
}

void ReadText(Vr vr, std::string_view field, Digest& digest)
{
    field = WithoutPadding(field);
    switch (vr) {
    case Vr::DA:
        ForEachPiece(field, "\\", [&](std::string_view date) { ReadDate(date, digest); });
        break;
    case Vr::TM:
        ForEachPiece(field, "\\", [&](std::string_view time) { ReadTime(time, digest); });
        break;
    case Vr::DT:
        ForEachPiece(field, "\\", [&](std::string_view text) { ReadDateTime(text, digest); });
        break;
    case Vr::AS:
        ForEachPiece(field, "\\", [&](std::string_view age) { ReadAge(age, digest); });
        break;
    case Vr::PN:
        ForEachPiece(field, "\\^=", [&](std::string_view component) { digest.Text(component); });
        break;
    default:
        ForEachPiece(field, "\\", [&](std::string_view text) { digest.Text(text); });
        break;
    }
}

} // namespace kivds::peers
