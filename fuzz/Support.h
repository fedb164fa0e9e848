// What the harnesses share: taking inputs apart, building attributes from them, watching the error sink, and
// the checks of everything that is read and written.
#pragma once

#include "KivDSDataU.h"
#include "tests/support/FailingNew.h"
#include "tests/support/GuardedBytes.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

namespace kivds::fuzz {

using Facade = CKivDSDicomAttributeCollection;
using AttributePtr = std::unique_ptr<CKivDSDicomAttribute>;
using FacadePtr = std::unique_ptr<Facade>;

/// Ends the program, naming the promise, when the library has not kept it.
void Require(bool kept, const char* promise);

/// Takes an input apart from its front. When nothing is left it gives zeros and empty texts.
class Input
{
public:
    explicit Input(std::string_view bytes) : m_Rest(bytes) {}

    bool Empty() const { return m_Rest.empty(); }
    std::string_view Rest() const { return m_Rest; }
    int Byte();
    bool Flag() { return (Byte() & 1) != 0; }
    /// A number from 0 to `count` - 1, for counts up to 256.
    int Below(int count) { return Byte() % count; }
    /// A little-endian number of 32 bits.
    int Number();
    /// A byte that says how many bytes follow, up to `longest` of them, and these.
    std::string_view Text(int longest);

private:
    std::string_view m_Rest;
};

using ExactBlock = test::Exact;

/// Listens to the error sink while it lives. A report that is not documented, or that only a lack of memory
/// excuses, ends the program.
class ReportWatch
{
public:
    ReportWatch();
    ~ReportWatch();
    ReportWatch(const ReportWatch&) = delete;
    ReportWatch& operator=(const ReportWatch&) = delete;

    int Count() const { return m_nCount; }
    /// Whether a report since the last call said that there is something that no stream can hold: a value
    /// without data, or an enhanced multi-frame collection without its regular one.
    bool TakeUnwritable();

private:
    static void Listen(void* context, const wchar_t* function, const wchar_t* message, int code);

    int m_nCount = 0;
    bool m_bUnwritable = false;
};

/// A tag, one of few.
unsigned long TakeTag(Input& input);
/// An element as the input describes it.
struct SElement
{
    SElement(Input& input, unsigned long itsTag, bool isReplicated);

    unsigned long tag;
    int representation;
    int index;
    int expectedCount;
    bool mustReplicate;
    ExactBlock bytes;
};
/// An attribute initialised from it, which fails without bytes.
AttributePtr AttributeOf(const SElement& element);

/// An attribute as the input describes it: from an element, from values, or a code sequence; with any flags,
/// and perhaps with one value a frame.
AttributePtr BuildAttribute(Input& input);
/// A scope of a study, a series and an image.
std::unique_ptr<CKivIPPScopeElementC> BuildScope(Input& input);

/// Uses every query of the attribute, checks that the answers agree, and that it can be copied, written and
/// read.
void CheckAttribute(const CKivDSDicomAttribute& attribute, ReportWatch& reports);

/// Checks a facade of any kind: that its counts add up, and that the iterator and the look-up find the same
/// attributes.
void CheckFacade(Facade& facade);
/// Checks that it can be written and read, where its kind has a stream.
void CheckFacadeStream(Facade& facade, ReportWatch& reports);

/// Calls use(attribute) for each attribute that an iterator gives; gives their number.
template <class Use>
long Walk(CKivDSDicomAttributeCollectionIterator&& iterator, Use use)
{
    long count = 0;
    for (auto* attribute = iterator.GetFirstAttribute(); attribute; attribute = iterator.GetNextAttribute()) {
        use(*attribute);
        ++count;
    }
    return count;
}

unsigned long TagOf(const CKivDSDicomAttribute& attribute);

/// What Serialize writes into a block of exactly the length that it announced; nothing when the object holds
/// what no stream can hold.
template <class Object>
std::optional<std::string> Write(Object& object, ReportWatch& reports)
{
    reports.TakeUnwritable();
    int announced = 0;
    int written = 0;
    bool done = object.Serialize(nullptr, announced);
    const ExactBlock block(std::string(static_cast<std::size_t>(done ? announced : 0), '?'));
    done = done && object.Serialize(block.Data(), written);
    if (!done) {
        Require(reports.TakeUnwritable(), "what can be held in a stream can be written");
        return std::nullopt;
    }
    Require(written == announced, "the bytes written are as many as announced");
    return std::string(block.Data(), static_cast<std::size_t>(written));
}

/// Checks that what `object` writes can be read into new objects, which then write the same bytes again and
/// are equal, and that it cannot be read when a byte is missing. `form` is what Deserialize is told beside
/// the bytes.
template <class Make, class Object, class... Form>
void CheckRoundTrip(ReportWatch& reports, Make make, Object& object, Form... form)
{
    const std::optional<std::string> stream = Write(object, reports);
    if (!stream)
        return;
    const ExactBlock bytes(*stream);
    const auto first = make();
    const auto second = make();
    int size = 0;
    const int reported = reports.Count();
    Require(first->Deserialize(bytes.Data(), bytes.Size(), size, form...) && size == bytes.Size(),
            "what is written can be read with its length given");
    Require(second->Deserialize(bytes.Data(), size, form...) && size == bytes.Size(),
            "what is written can be read");
    Require(reports.Count() == reported, "what is written reads without a report");
    Require(Write(*first, reports) == stream && Write(*second, reports) == stream,
            "what is read back writes the same bytes");
    Require(*first == *second, "what is read twice is equal");
    const ExactBlock cut(std::string_view(*stream).substr(0, stream->size() - 1));
    Require(!make()->Deserialize(cut.Data(), cut.Size(), size, form...), "a stream cut short is refused");
}

/// The most that a bounded read of `bytes` bytes may allocate.
constexpr long long AllocationLimit(int bytes)
{
    return 20LL * bytes + 64 * 1024;
}

/// Reads `bytes` into an object that `make` makes, bounded, and checks how that was done and what came of it.
/// The object is as valid after a failure as after a success; it is handed back.
template <class Make, class... Form>
auto CheckRead(ReportWatch& reports, Make make, std::string_view bytes, Form... form)
{
    const ExactBlock block(bytes);
    auto object = make();
    int size = 0;
    const int reported = reports.Count();
    bool read = false;
    {
        const test::Allocations allocations;
        read = object->Deserialize(block.Data(), block.Size(), size, form...);
        Require(allocations.Bytes() <= AllocationLimit(block.Size()),
                "reading takes memory in proportion to the input");
    }
    if (read) {
        Require(size >= 0 && size <= block.Size(), "no more is taken than is there");
        // The form that trusts the stream reads the same from a sound one. Of an enhanced stream and of
        // script versions it gives the length that the stream states, whatever that is.
        using Object = std::decay_t<decltype(*object)>;
        constexpr bool versions = std::is_base_of_v<CKivDSScriptVersion, Object>;
        constexpr bool unchecked = versions || std::is_same_v<Object, CKivDSEnhancedMFCollection>;
        const auto trusting = make();
        int same = 0;
        Require((trusting->Deserialize(block.Data(), same, form...) || versions) &&
                    (unchecked || same == size),
                "a sound stream reads the same without its length");
        Require(Write(*object, reports) == Write(*trusting, reports),
                "a sound stream gives the same object without its length");
    } else {
        Require(reports.Count() > reported, "no stream is refused without a report");
    }
    return object;
}

} // namespace kivds::fuzz
