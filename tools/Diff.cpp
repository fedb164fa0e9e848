#include "tools/Command.h"
#include "tools/Console.h"
#include "tools/Equality.h"
#include "tools/Input.h"
#include "tools/Text.h"

#include <CLI/CLI.hpp>
#include <fmt/core.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <set>

namespace kivds::tool {
namespace {

struct DiffOptions
{
    std::string a;
    std::string b;
};

/// One attribute in A, in B, or in both and not the same.
struct Change
{
    const Attribute* a; // null: only in B
    const Attribute* b; // null: only in A
};

/// What set operators say about two collections. It owns the collections that its changes point into.
class Comparison
{
public:
    Comparison(const Collection& a, const Collection& b) : m_RestA(a, true), m_RestB(b, true)
    {
        m_RestA -= b;
        m_RestB -= a;
        m_pSameInA.reset(a ^ b);
        m_pSameInB.reset(a | b);
        AddDetails();
        AddRests();
        std::stable_sort(changes.begin(), changes.end(),
                         [](const Change& x, const Change& y) { return TagOf(x) < TagOf(y); });
    }

    static unsigned long TagOf(const Change& change) { return tool::TagOf(change.a ? *change.a : *change.b); }

    std::vector<Change> changes;
    std::vector<const Attribute*> placeholders; // in both, of data that is not kept
    std::vector<const Attribute*> same;         // in both, as far as a collection holds it

private:
    void AddDetails();
    void AddRests();

    Collection m_RestA; // A - B: A's attributes that B does not hold or holds otherwise
    Collection m_RestB; // B - A
    std::unique_ptr<Collection> m_pSameInA;
    std::unique_ptr<Collection> m_pSameInB;
};

/// The attributes that are equal by their values, tag by tag in both; some differ in what that equality
/// leaves out.
void Comparison::AddDetails()
{
    if (!m_pSameInA || !m_pSameInB)
        return;
    const std::vector<const Attribute*> inA = AttributesOf(*m_pSameInA);
    const std::vector<const Attribute*> inB = AttributesOf(*m_pSameInB);
    for (std::size_t i = 0; i < std::min(inA.size(), inB.size()); ++i) {
        if (!HaveSameDetails(*inA[i], *inB[i]))
            changes.push_back({inA[i], inB[i]});
        else if (IsPlaceholder(*inA[i]))
            placeholders.push_back(inA[i]);
        else
            same.push_back(inA[i]);
    }
}

/// A tag in both rests is one that changed.
void Comparison::AddRests()
{
    const std::vector<const Attribute*> inA = SortedAttributesOf(m_RestA);
    const std::vector<const Attribute*> inB = SortedAttributesOf(m_RestB);
    auto a = inA.begin();
    auto b = inB.begin();
    while (a != inA.end() || b != inB.end()) {
        const bool takesA = a != inA.end() && (b == inB.end() || tool::TagOf(**a) <= tool::TagOf(**b));
        const bool takesB = b != inB.end() && (a == inA.end() || tool::TagOf(**b) <= tool::TagOf(**a));
        changes.push_back({takesA ? *a : nullptr, takesB ? *b : nullptr});
        a += takesA ? 1 : 0;
        b += takesB ? 1 : 0;
    }
}

/// All frames of multi-frame attributes; none when they are beyond counting, which no image's are.
std::set<int> FramesOfAll(const std::vector<Change>& changes)
{
    constexpr long long kMost = 1000000;
    std::set<int> frames;
    for (const Change& change : changes) {
        for (const Attribute* const attribute : {change.a, change.b}) {
            for (const auto& [first, last] : FrameRunsOf(*attribute)) {
                if (static_cast<long long>(last) - first >= kMost - static_cast<long long>(frames.size()))
                    return {};
                for (int frame = first; frame <= last; ++frame)
                    frames.insert(frames.end(), frame);
            }
        }
    }
    return frames;
}

std::unique_ptr<Attribute> FrameCopy(const Attribute& attribute, int frame)
{
    Attribute* copy = nullptr;
    attribute.CreateSingleFrameCopy(frame, &copy);
    return std::unique_ptr<Attribute>(copy);
}

/// Compares two inputs and prints what differs.
class Diff
{
public:
    Diff(Input& a, Input& b, Console& console)
        : m_A(a), m_B(b), m_FormA(*a.collection), m_FormB(*b.collection), m_Console(console)
    {
    }

    /// Whether A and B are the same as far as they could be compared.
    bool Run();

private:
    void CompareAttributes(const Collection& a, const Collection& b, bool isTopLevel);
    void CompareFrames();
    void CompareBytes(const Comparison& comparison);
    void Print(const Change& change);
    void PrintByFrame(const std::vector<Change>& changes);
    void PrintOther(const Attribute& attribute, std::string_view text);
    void PrintHeading(const std::string& heading);
    bool HasFiles() const { return m_A.file.IsOpen() && m_B.file.IsOpen(); }
    bool IsHeldInPart(const Attribute& attribute) const;

    Input& m_A;
    Input& m_B;
    TextForm m_FormA;
    TextForm m_FormB;
    Console& m_Console;
    std::string m_Heading; // printed before the first line below it
    std::string m_Indent;
    std::size_t m_nUncompared = 0;
    bool m_bSame = true;
};

bool Diff::Run()
{
    const std::unique_ptr<Collection> a = RegularOf(*m_A.collection);
    const std::unique_ptr<Collection> b = RegularOf(*m_B.collection);
    CompareAttributes(*a, *b, true);
    CompareFrames();
    if (m_nUncompared > 0)
        m_Console.Print(
            Line().Add(fmt::format("! {} elements were not compared: sequences and pixel data, of which "
                                   "a stream holds the place alone",
                                   m_nUncompared),
                       Style::Yellow));
    return m_bSame;
}

void Diff::CompareAttributes(const Collection& a, const Collection& b, bool isTopLevel)
{
    const Comparison comparison(a, b);
    std::vector<Change> byFrame;
    for (const Change& change : comparison.changes) {
        if (change.a && change.b && change.a->IsMultiFrame() && change.b->IsMultiFrame())
            byFrame.push_back(change);
        else
            Print(change);
    }
    PrintByFrame(byFrame);
    if (!HasFiles())
        m_nUncompared += comparison.placeholders.size();
    else if (isTopLevel)
        CompareBytes(comparison);
}

/// Whether the object may say more about an attribute than the collection holds of it.
bool Diff::IsHeldInPart(const Attribute& attribute) const
{
    constexpr int kPersonName = 26; // empty components
    const auto warned = [&](const Input& input) {
        return std::any_of(input.warnings.begin(), input.warnings.end(),
                           [&](const DicomWarning& warning) { return warning.tag == TagOf(attribute); });
    };
    return attribute.GetDicomRepresentation() == kPersonName || AsCodes(attribute) || warned(m_A) ||
           warned(m_B);
}

/// What the collections do not keep, between two DICOM files.
void Diff::CompareBytes(const Comparison& comparison)
{
    std::vector<const Attribute*> attributes = comparison.placeholders;
    std::copy_if(comparison.same.begin(), comparison.same.end(), std::back_inserter(attributes),
                 [this](const Attribute* attribute) { return IsHeldInPart(*attribute); });
    for (const Attribute* const attribute : attributes) {
        const std::string difference = m_A.file.FirstDifference(TagOf(*attribute), m_B.file);
        if (!difference.empty())
            PrintOther(*attribute, difference);
    }
}

void Diff::CompareFrames()
{
    const std::vector<const Collection*> a = FramesOf(*m_A.collection);
    const std::vector<const Collection*> b = FramesOf(*m_B.collection);
    const bool isEnhanced =
        m_A.collection->IsEnhancedMFCollection() || m_B.collection->IsEnhancedMFCollection();
    if (isEnhanced && a.size() != b.size()) {
        m_bSame = false;
        m_Console.Print(
            Line().Add(fmt::format("! {} and {} per-frame collections", a.size(), b.size()), Style::Yellow));
    }
    for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i) {
        m_Heading = fmt::format("Frame {}", i + 1);
        m_Indent = "  ";
        const std::unique_ptr<Collection> frameA = RegularOf(*a[i]);
        const std::unique_ptr<Collection> frameB = RegularOf(*b[i]);
        CompareAttributes(*frameA, *frameB, false);
    }
    m_Heading.clear();
    m_Indent.clear();
}

void Diff::PrintHeading(const std::string& heading)
{
    if (!heading.empty())
        m_Console.Print(Line().Add(heading, Style::Bold));
}

void Diff::Print(const Change& change)
{
    m_bSame = false;
    PrintHeading(m_Heading);
    m_Heading.clear();
    if (!change.b)
        m_Console.Print(m_FormA.LineOf(*change.a, m_Indent + "- ", Style::Red));
    else if (!change.a)
        m_Console.Print(m_FormB.LineOf(*change.b, m_Indent + "+ ", Style::Green));
    else {
        m_Console.Print(m_FormA.LineOf(*change.a, m_Indent + "< ", Style::Red));
        m_Console.Print(m_FormB.LineOf(*change.b, m_Indent + "> ", Style::Green));
    }
}

/// Multi-frame attributes that are in both: the frames in which they differ, or whole where no frame tells.
void Diff::PrintByFrame(const std::vector<Change>& changes)
{
    std::vector<bool> isShown(changes.size(), false);
    for (const int frame : FramesOfAll(changes)) {
        m_Heading = fmt::format("Frame {}", frame);
        m_Indent = "  ";
        for (std::size_t i = 0; i < changes.size(); ++i) {
            const std::unique_ptr<Attribute> a = FrameCopy(*changes[i].a, frame);
            const std::unique_ptr<Attribute> b = FrameCopy(*changes[i].b, frame);
            if ((!a && !b) || (a && b && AttributeEqual()(a.get(), b.get())))
                continue;
            Print({a.get(), b.get()});
            isShown[i] = true;
        }
    }
    m_Heading.clear();
    m_Indent.clear();
    for (std::size_t i = 0; i < changes.size(); ++i) {
        if (!isShown[i])
            Print(changes[i]);
    }
}

void Diff::PrintOther(const Attribute& attribute, std::string_view text)
{
    m_bSame = false;
    m_Console.Print(m_FormA.Head(attribute, m_Indent + "! ", Style::Yellow, "").Add(text));
}

int Compare(const DiffOptions& options, Console& console)
{
    Input a = OpenInput(options.a, console);
    Input b = OpenInput(options.b, console);
    if (!a || !b)
        return kTrouble;
    const bool isSame = Diff(a, b, console).Run();
    if (isSame && console.HasTerminal())
        console.Print("the same");
    return isSame ? kDone : kNo;
}

} // namespace

void AddDiff(CLI::App& app, Console& console, int& status)
{
    const auto options = std::make_shared<DiffOptions>();
    CLI::App* const command =
        app.add_subcommand("diff", "Compare two files: - only in A, + only in B, < old and > new of what "
                                   "changed, ! what a collection does "
                                   "not keep. Exit status 0 same, 1 different, 2 trouble");
    command->add_option("A", options->a, "A DICOM file or a collection stream")->required();
    command->add_option("B", options->b, "A DICOM file or a collection stream")->required();
    command->callback([options, &console, &status] { status = Compare(*options, console); });
}

} // namespace kivds::tool
