// Writes streams to files, or reads the files that another build wrote: the same objects have the same bytes
// on every platform, and every platform reads them. Uses the library as its callers do.
//     same_bytes write DIR     writes the objects below, and looks at them
//     same_bytes read DIR      reads and compares them; other *.kds files there must be written as they are
//     read
#include "KivDSDataU.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace {

using Facade = CKivDSDicomAttributeCollection;
using namespace std::string_view_literals;

struct Element
{
    unsigned long m_Tag;
    int m_nRepresentation;
    std::string_view m_Bytes; // as files hold them
    int m_nFrames = 0;        // one element a frame, when not 0
    int m_nInSequenceIndex = -1;
    int m_nExpectedCount = 1;
};

constexpr int AS = 1, AT = 2, CS = 3, DA = 4, DS = 6, FD = 7, FL = 8, IS = 9, LT = 11, SH = 14, SL = 15,
              SS = 17, TM = 19, UL = 21, US = 22, UN = 23, PN = 26, OB = 27, OW = 28, DT = 30;

const Element kElements[] = {
    {0x00080005, CS, "ISO_IR 126"},
    {0x00080008, CS, R"(ORIGINAL\PRIMARY\AXIAL)"},
    {0x00080022, DA, R"(19970424\20240229 )", 0, -1, 2},
    {0x00080032, TM, "101905.500"},
    {0x0008002A, DT, "20240229101905.123456-0330"},
    {0x00080104, SH, "of an item", 0, 2},
    {0x00100010, PN, "\xC4\xE9\xEF\xED^A==\\Second^Name^Middle^Dr^Jr"},
    {0x00101010, AS, "042Y"},
    {0x00101030, DS, R"(0.1\-1.5e-3\1e300\2.2250738585072014E-308\81.646465)"},
    {0x00104000, LT, "A text with a backslash \\ of its own, and more than sixteen bytes"},
    {0x00180050, DS, "0.30000000000000004"},
    {0x00189073, FD, "\x18\x2D\x44\x54\xFB\x21\x09\x40\x00\x00\x00\x00\x00\x00\xF8\x7F"sv}, // pi, a NaN
    {0x00200013, IS, R"(-2147483648\2147483647\0)"},
    {0x00201041, UN, ""},
    {0x00280009, AT, "\x18\x00\x63\x10"sv},
    {0x00280106, SS, "\x00\x80"sv},
    {0x00281101, US, "\x00\x01\x00\x80\x10\x00"sv},
    {0x00281201, OW, "\x00\x01\x02\x03\x04\x05\x06\x07\x08\x09\x0A\x0B\x0C\x0D\x0E\x0F\x10\x11"sv},
    {0x00420011, OB, "\x25\x50\x44\x46\xFF\x00"sv},
    {0x00540010, US, "\x01\x00\x01\x00\x02\x00"sv, 3},
    {0x00540020, UL, "\xFF\xFF\xFF\xFF\x00\x00\x00\x80\x01\x00\x00\x00"sv, 3},
    {0x00660016, FL, "\xC3\xF5\x48\x40\x00\x00\x80\x7F\x00\x00\x00\x80"sv}, // 3.14, infinity, -0
    {0x00720078, SL, "\xFE\xFF\xFF\xFF"sv},
    {0x7FE00010, OW, "\x00\x01\x00\x02"sv},
};

/// Hands an attribute over to a collection.
bool Give(Facade& collection, std::unique_ptr<CKivDSDicomAttribute> attribute)
{
    const bool added = attribute && collection.AddAttribute(attribute.get(), true);
    if (added)
        (void)attribute.release();
    return added;
}

bool Add(Facade& collection, const Element& e)
{
    std::unique_ptr<CKivDSDicomAttribute> made(g_DicomAttributeFactory.CreateDicomAttribute(0));
    if (e.m_Bytes.empty())
        made->InitEmpty(e.m_Tag, e.m_nRepresentation, true);
    else if (!made->InitFromDicomData(e.m_Tag, e.m_nRepresentation, static_cast<int>(e.m_Bytes.size()),
                                      e.m_Bytes.data(), nullptr, false, false, e.m_nInSequenceIndex,
                                      e.m_nExpectedCount))
        return false;
    if (e.m_nFrames > 0 && !made->SetMultiFrameInfo(1, e.m_nFrames))
        return false;
    return Give(collection, std::move(made));
}

bool AddCodes(Facade& collection)
{
    tagSKivDSCodeSequenceAttributeInfo code = {"T-A0100", "SRT",      "1.0", "Brain",    "4031",
                                               "DCMR",    "20020904", 1,     "20030108", "1.2.3"};
    auto codes = std::make_unique<CKivDSCodeSequenceAttribute>(0x00082218, code);
    std::string_view("Head").copy(code.szCodeMeaning, sizeof "Head");
    *codes += CKivDSCodeSequenceAttribute(0x00082218, code);
    return Give(collection, std::move(codes));
}

std::unique_ptr<Facade> MakeCollection()
{
    auto collection = std::make_unique<Facade>();
    bool good = AddCodes(*collection);
    for (const Element& element : kElements)
        good = Add(*collection, element) && good;
    return good ? std::move(collection) : nullptr;
}

std::unique_ptr<Facade> MakeEnhanced()
{
    auto* const enhanced = new CKivDSEnhancedMFCollection;
    auto facade = std::make_unique<Facade>(enhanced);
    const std::unique_ptr<Facade> shared = MakeCollection();
    bool good = shared && enhanced->AddCollection(shared.get(), true);
    for (const std::string_view position : {R"(-1.5\0\1e-7)", R"(-1.5\0\2.5)"}) {
        Facade frame;
        good = Add(frame, {0x00200032, DS, position}) &&
               Add(frame, {0x00209157, UL, "\x01\0\0\0\x02\0\0\0"sv}) &&
               enhanced->AddMFCollection(&frame, true) && good;
    }
    return good ? std::move(facade) : nullptr;
}

std::string Written(Facade& collection)
{
    int size = 0;
    std::string stream;
    if (collection.Serialize(nullptr, size))
        stream.resize(static_cast<std::size_t>(size));
    return size > 0 && collection.Serialize(stream.data(), size) ? stream : std::string();
}

std::string Written(const CKivDSScriptVersion& list)
{
    std::string stream(static_cast<std::size_t>(list.GetSerializationSize()), '\0');
    return list.Serialize(stream.data()) > 0 ? stream : std::string();
}

std::string WrittenVersions()
{
    CKivDSScriptVersion list;
    const bool good = list.AddVersion("MR", 7) && list.AddVersion("CT", 3) &&
                      list.AddVersion("CT", 4294967295u) && list.AddVersion("", 0) &&
                      list.AddVersion("\xC4", 1);
    return good ? Written(list) : std::string();
}

/// What is written once these bytes have been read; empty when they are refused.
std::string Rewritten(const std::string& bytes, bool versions)
{
    const int length = static_cast<int>(bytes.size());
    int size = 0;
    if (versions) {
        CKivDSScriptVersion list;
        return list.Deserialize(bytes.data(), length) == length ? Written(list) : std::string();
    }
    Facade collection;
    return collection.Deserialize(bytes.data(), length, size, true) && size == length ? Written(collection)
                                                                                      : std::string();
}

/// Looks at a file that a build has written: one of the objects here has the bytes that this build gives it,
/// and any is written as it was read.
bool Check(const std::filesystem::path& path, const std::map<std::string, std::string>& made)
{
    std::ifstream file(path, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    const std::string name = path.filename().string();
    const auto mine = made.find(name);
    const bool same =
        (mine == made.end() || mine->second == bytes) && Rewritten(bytes, name == "script_versions") == bytes;
    std::printf("%s: %s\n", path.string().c_str(), same ? "the same" : "NOT THE SAME");
    return same && !bytes.empty();
}

} // namespace

int main(int argc, char** argv)
{
    const std::string_view verb = argc == 3 ? argv[1] : "";
    if (verb != "write" && verb != "read") {
        std::fputs("usage: same_bytes write|read DIR\n", stderr);
        return 2;
    }
    bool good = true;
    g_KivIPError.SetListener(
        [](void* context, const wchar_t* function, const wchar_t* message, int) {
            std::fprintf(stderr, "%ls: %ls\n", function, message);
            *static_cast<bool*>(context) = false;
        },
        &good);

    const std::filesystem::path dir = argv[2];
    const std::unique_ptr<Facade> collection = MakeCollection(), enhanced = MakeEnhanced();
    std::map<std::string, std::string> made = {{"script_versions", WrittenVersions()}};
    made["collection.kds"] = collection ? Written(*collection) : "";
    made["enhanced.kds"] = enhanced ? Written(*enhanced) : "";
    for (const auto& [name, bytes] : made) {
        if (verb == "write")
            std::ofstream(dir / name, std::ios::binary) << bytes;
        good = !bytes.empty() && Check(dir / name, made) && good;
    }
    for (const auto& file : std::filesystem::directory_iterator(dir)) {
        if (file.path().extension() == ".kds")
            good = Check(file.path(), made) && good;
    }
    g_KivIPError.SetListener(nullptr, nullptr);
    return good ? 0 : 1;
}
