// Memory that runs out: every operation is done again and again, with its first allocation failing, then its
// second, and so on until it needs no more; once the failing one alone, once all later ones, too. Whatever
// fails: no exception leaves the operation, nothing leaks, what does not get done is reported in documented
// words or told by the result, what is only read stays as it was, and all objects can still be shown,
// written, emptied and deleted.
#include "attribute/DumpListener.h"
#include "tests/support/Attributes.h"
#include "tests/support/DocumentedReports.h"
#include "tests/support/Notation.h"

#include <functional>

namespace kivds::test {
namespace {

using Codes = CKivDSCodeSequenceAttribute;
using Element = CKivIPPScopeElementC;
using Series = CKivDSCompoundCollection;
using Frames = CKivDSEnhancedMFCollection;

struct Subject : CKivDSSubscriber
{
    void Notify(CKivDSBase* const, int, long, long) override {}
    using CKivDSSubscriber::NotifySubscribers;
};

/// What operations work on; the right sides are only read. And what operations give.
struct World
{
    /// Collections of these forms ("" on the left: none), attributes of these kinds.
    World(Txt left, Txt right, int kindX, int kindY)
        : x(OfKind(kindX)), y(OfKind(kindY)), attribute(Stream(*y))
    {
        EXPECT_TRUE(versions.AddVersion("CT", 1) && otherVersions.AddVersion("MR", 2));
        if (!*left)
            return;
        a = Make(left);
        b = Make(right);
        compoundA = Make("{X1 Y1;Y1|M1}");
        compoundB = Make("{X1+2|M1;Y1r}");
        enhancedA = Make("<X1 N2|M1,2;Z1;Z2>");
        enhancedB = Make("<X1 N2|M1,2;Z1;Y1>");
        SetScope(*b, "1.2.840.10008.1.2.3.4.5");
        SetScope(*compoundB, "1.2.840.10008.1.2.3.4.6");
        if (!Compound(*b))
            stream = Stream(*b);
    }
    ~World()
    {
        FreeAttributeValue(value);
        delete gave;
    }

    Series& C() { return *Compound(*compoundA); }
    Series& D() { return *Compound(*compoundB); }
    Frames& E() { return *Enhanced(*enhancedA); }
    Frames& F() { return *Enhanced(*enhancedB); }
    Codes& P() { return static_cast<Codes&>(*codesA); }
    Codes& Q() { return static_cast<Codes&>(*codesB); }

    /// Keeps what an operation gave.
    void Keep(Facade* result) { (made[0] ? made[1] : made[0]).reset(result); }
    void Keep(CKivDSDicomAttribute* result) { gave = result; }
    void Keep(CKivIPPSerialFormC* result) { gaveScope.reset(result); }
    void Keep(bool done) { number = number * 2 + done; }
    /// The same, of an operation whose result alone tells that it failed.
    template <class Result>
    void Told(Result result)
    {
        told = told || !result;
        Keep(result);
    }

    CollectionPtr a, b, compoundA, compoundB, enhancedA, enhancedB, made[2];
    AttributePtr x, y, codesA = OfKind(7), codesB = OfKind(8), fresh = MakeAttribute("X1+5,6,7,8,9r");
    CKivDSDicomAttribute* gave = nullptr;
    std::unique_ptr<Element> scope = Scope("1.2.840.10008.5.1.4.1.1.2"), other = Scope("1.2.840.10008.5.1");
    std::unique_ptr<CKivIPPSerialFormC> gaveScope;
    std::unique_ptr<CKivIPPScopeItemC> item{other->GetScopeItem(2, true)};
    CKivIPPRangeIDC range;
    CKivDSScriptVersion versions, otherVersions;
    SKivAGAttributeValue value = {}, records[2] = {*Q().GetValuePtr(0), *Q().GetValuePtr(1)};
    std::string attribute, stream; // of Y, of B
    unsigned char text[40];
    int frames[5] = {3, 1, 2, 7, 9};
    int number = 0, size = 0;
    bool told = false;
};

std::string Shown(const CKivIPPSerialFormC* scope)
{
    int size = 0;
    std::string stream(4096, '\0');
    return scope && scope->Serialize(stream.data(), &size) ? stream.substr(0, static_cast<std::size_t>(size))
                                                           : "none";
}

std::string Shown(const CKivDSDicomAttribute* attribute)
{
    const auto* const codes = dynamic_cast<const Codes*>(attribute);
    return (attribute ? Show(kKindTag, *attribute, false) : "none") +
           (codes ? std::to_string(codes->GetNumberOfCodes()) + ' ' : " ");
}

/// What may change, and what may not.
std::string Changing(World& w)
{
    std::string shown = std::to_string(w.number) + (w.value.pData ? " value " : " ");
    for (const CollectionPtr* facade : {&w.a, &w.compoundA, &w.enhancedA, &w.made[0], &w.made[1]})
        shown += *facade ? Show(**facade) + ScopeOf(**facade) + ' ' : "none ";
    char modality[64] = "";
    unsigned int version = 0;
    for (int i = 0; w.versions.GetVersion(i, modality, version, version); ++i)
        shown += modality + std::to_string(version);
    return shown + Shown(w.x.get()) + Shown(w.codesA.get()) + Shown(w.gave) + Shown(w.scope.get()) +
           Shown(w.gaveScope.get()) + Shown(&w.range);
}
std::string Fixed(const World& w) // but for the scope, which a shallow copy of a frame narrows
{
    std::string shown = Shown(w.y.get()) + Shown(w.codesB.get()) + Shown(w.other.get());
    for (const CollectionPtr* facade : {&w.b, &w.compoundB, &w.enhancedB})
        shown += *facade ? Show(**facade) : "";
    return shown;
}

template <class Object>
void Write(Object& object)
{
    int size = 0;
    if (object.Serialize(nullptr, size))
        object.Serialize(std::string(static_cast<std::size_t>(size), '?').data(), size);
}

void UseUp(World& w)
{
    for (const CollectionPtr* facade : {&w.a, &w.enhancedA, &w.made[0], &w.made[1]}) {
        if (*facade && !Compound(**facade)) {
            Write(**facade);
            (*facade)->RemoveAllAttributes();
        }
    }
    for (CKivDSDicomAttribute* const attribute : {w.x.get(), w.codesA.get(), w.gave}) {
        if (attribute) {
            Write(*attribute);
            attribute->Clean();
        }
    }
}

using Operation = std::pair<std::string, std::function<void(World&)>>;

struct AllocationFailureTest : testing::Test
{
    AllocationFailureTest()
    {
        SetDumpListener([](void*, Txt) {}, nullptr);
        for (std::string* text : {&m_Whole, &m_Shown})
            text->reserve(1 << 16); // so that keeping them allocates nothing
    }
    ~AllocationFailureTest() override { SetDumpListener(nullptr, nullptr); }

    /// Does the operation in a world of its own while allocation `n` fails; whether it came that far, and all
    /// was as it must be.
    template <class MakeWorld>
    bool Once(MakeWorld makeWorld, const Operation& operation, long n, Allocations::Later later)
    {
        const long live = Allocations::Live();
        const char* broken = nullptr;
        bool failed = false;
        {
            World world = makeWorld();
            const std::string before = Fixed(world);
            const ReportCounter reports;
            try {
                const Allocations watched(n, later);
                operation.second(world);
                failed = watched.Failed();
            } catch (...) {
                broken = "an exception left the operation";
            }
            m_Shown.assign(Changing(world));
            if (n < 0)
                m_Whole.assign(m_Shown);
            if (m_Shown != m_Whole && reports.Count() == 0 && !world.told)
                broken = "not done, and not reported";
            if (before != Fixed(world))
                broken = "what is only read has changed";
            UseUp(world);
            if (reports.Undocumented() > 0)
                broken = "an undocumented report";
        }
        if (!broken && n >= 0 && Allocations::Live() != live)
            broken = "a leak";
        EXPECT_FALSE(broken) << broken << ": " << operation.first << ' ' << m_Where << ", allocation " << n
                             << (later == Allocations::Later::Fail ? " and all later ones\n" : "\n")
                             << m_Shown << "\ninstead of\n"
                             << m_Whole;
        return failed && !broken;
    }

    template <class MakeWorld>
    void Exhaust(MakeWorld makeWorld, const Operation& operation)
    {
        Once(makeWorld, operation, -1, Allocations::Later::Succeed); // what is made once, is made now
        for (const auto later : {Allocations::Later::Succeed, Allocations::Later::Fail}) {
            for (long n = 0; Once(makeWorld, operation, n, later); ++n)
                ++m_nFailures;
        }
    }

    std::string m_Where, m_Whole, m_Shown;
    long m_nFailures = 0;
};

// ---- attributes

using Records = std::unique_ptr<SKivAGAttributeValue[]>;

const Operation kAttributeOperations[] = {
    {"copy", [](World& w) { w.Keep(CKivDSDicomAttribute(*w.x) == *w.x); }},
    {"=", [](World& w) { *w.x = *w.y; }},
    {"+=", [](World& w) { *w.x += *w.y; }},
    {"copy of codes", [](World& w) { w.Keep(Codes(w.P()) == w.P()); }},
    {"codes =", [](World& w) { w.P() = w.Q(); }},
    {"codes +=", [](World& w) { w.P() += w.Q(), w.told = true; }}, // no memory for a meaning: the old values
    {"factory, a copy", [](World& w) { w.Told(g_DicomAttributeFactory.CreateDicomAttribute(*w.x)); }},
    {"factory", [](World& w) { w.Told(g_DicomAttributeFactory.CreateDicomAttribute(w.x->GetType())); }},
    {"InitFromValues", [](World& w) { w.Keep(w.x->InitFromValues(kKindTag, CS, 2, w.records, true)); }},
    {"SetValue", [](World& w) { w.Keep(!w.x->GetValuePtr(0) || w.x->SetValue(0, w.records)); }},
    {"GetValue", [](World& w) { w.Keep(w.x->GetValuePtr(0) && w.x->GetValue(0, &w.value)); }},
    {"GetInSequenceValue", [](World& w) { w.Keep(w.x->GetInSequenceValue(0, &w.value)); }},
    {"CreateSingleFrameCopy", [](World& w) { w.Keep(w.x->CreateSingleFrameCopy(3, &w.gave)); }},
    {"numbered copy", [](World& w) { w.Keep(w.x->CreateInSequenceInitializedCopy(w.gave)); }},
    {"SetMultiFrameInfo", [](World& w) { w.Keep(w.x->SetMultiFrameInfo(5, w.frames)); }},
    {"SetMultiFrameInfo of a range", [](World& w) { w.Keep(w.x->SetMultiFrameInfo(1, 100)); }},
    {"GetFrameRangeCollection", [](World& w) { w.Keep(w.x->GetFrameRangeCollection()); }},
    {"render", [](World& w) { w.x->GetValueAsString(0, sizeof w.text, w.text); }},
    {"dump", [](World& w) { w.x->Dump(); }},
    {"read", [](World& w) { w.Keep(w.x->Deserialize(w.attribute.data(), w.size, true, 7)); }},
    {"bounded read",
     [](World& w) {
         w.Keep(w.x->Deserialize(w.attribute.data(), static_cast<int>(w.attribute.size()), w.size, true, 7));
     }},
    {"copy of a value", [](World& w) { w.Keep(CopyAttributeValue(w.records, &w.value, -1)); }},
    {"new records", [](World& w) { w.Keep(Records(GetNewAttributeValueArray(3)) != nullptr); }},
    {"Alloc", [](World& w) { w.Keep(OpenAttribute().Alloc(2, eAttrInt, 5)); }},
};

TEST_F(AllocationFailureTest, OfAttributes)
{
    for (const Operation& operation : kAttributeOperations) {
        for (int both = 0; both < kKinds * kKinds; ++both) {
            const int x = both / kKinds, y = both % kKinds;
            m_Where = std::to_string(x) + ' ' + std::to_string(y);
            Exhaust([=] { return World("", "", x, y); }, operation);
        }
    }
    EXPECT_GT(m_nFailures, 1000);
}

// The values are whole then, or there are none.
TEST_F(AllocationFailureTest, OfConversions)
{
    for (int code = -1; code <= 32; ++code) {
        for (const Txt text :
             {"A\\B^a text that is longer", "20240101\\20240202 ", "101530.25\\11 ", "20240229101530.25",
              "045Y", "1\\2\\3\\4\\5\\6\\7\\8\\9\\10\\11\\12\\13\\14\\15\\16\\17\\18", "1"}) {
            const auto convert = [=](World& w) {
                const int length = static_cast<int>(std::strlen(text));
                w.x->InitFromDicomData(kKindTag, code, length, text, nullptr, false, false, 0, 2);
            };
            m_Where = text;
            Exhaust([] { return World("", "", 5, 5); }, {std::to_string(code), convert});
        }
    }
    EXPECT_GT(m_nFailures, 100);
}

// ---- collections

void Split(World& w, bool deep)
{
    Facade *single = nullptr, *multi = nullptr;
    w.Keep(w.a->Split(single, multi, deep));
    w.Keep(single);
    w.Keep(multi);
}
/// Adds the new attribute.
void Give(World& w, bool merge)
{
    w.Keep(w.a->AddAttribute(w.fresh.get(), merge));
    if (w.number > 0)
        (void)w.fresh.release(); // the collection's now
}
template <class Made>
void Count(World& w, const Made& made) // of an object that goes again
{
    long count = 0;
    w.Keep(made.GetNumberOfAttributes(&count));
    w.number += static_cast<int>(count);
}
template <class Iterator, class Walked>
void Walk(World& w, Walked& walked)
{
    Iterator walk(walked, true, true);
    for (auto* next = walk.GetFirstAttribute(); next; next = walk.GetNextAttribute())
        ++w.number;
}

const Operation kFacadeOperations[] = {
    {"=", [](World& w) { *w.a = *w.b; }},
    {"/", [](World& w) { w.Told(*w.a / *w.b); }},
    {"^", [](World& w) { w.Told(*w.a ^ *w.b); }},
    {"|", [](World& w) { w.Told(*w.a | *w.b); }},
    {"new", [](World& w) { Count(w, Facade(true)); }},
    {"copies", [](World& w) { Count(w, Facade(*w.b)), Count(w, Facade(*w.b, true)); }},
    {"copies of a frame",
     [](World& w) { Count(w, Facade(*w.b, 1, false)), Count(w, Facade(*w.b, 1, true)); }},
    {"CreateCollection", [](World& w) { w.Keep(Facade::CreateCollection(w.a.get(), true)); }},
    {"Split", [](World& w) { Split(w, true); }},
    {"shallow Split", [](World& w) { Split(w, false); }},
    {"MergeCollections", [](World& w) { w.Keep(Facade::MergeCollections(*w.b, *w.b, *w.a)); }},
    {"update", [](World& w) { w.Keep(w.a->UpdateSingleFrameCollection(*w.b, true)); }},
    {"shallow update", [](World& w) { w.Keep(w.a->UpdateSingleFrameCollection(*w.b, false)); }},
    {"AddCompoundCollection", [](World& w) { w.Keep(w.a->AddCompoundCollection(w.b.get())); }},
    {"flatten", [](World& w) { w.Keep(Facade::ConvertCompoundToFlatCollection(*w.b)); }},
    {"AddAttribute", [](World& w) { Give(w, false); }},
    {"AddAttribute, merged", [](World& w) { Give(w, true); }},
    {"AddAttribute, multi-frame", [](World& w) { w.fresh->SetMultiFrameInfo(1, 2), Give(w, true); }},
    {"ExpectElements", [](World& w) { w.a->ExpectElements(9) && w.a->AddElement(Tag('Z'), LO, 3, "two"); }},
    {"AddElement", [](World& w) { w.Keep(w.a->AddElement(Tag('Z'), LO, 17, "more than sixteen")); }},
    {"RemoveAttribute", [](World& w) { w.Keep(w.a->RemoveAttribute(Tag('X'))); }},
    {"RemoveAllMultiFrameAttributes", [](World& w) { w.Keep(w.a->RemoveAllMultiFrameAttributes()); }},
    {"GetNumberOfFrames", [](World& w) { w.Keep(w.a->GetNumberOfFrames(&w.size)); }},
    {"Dump", [](World& w) { w.a->Dump(); }},
    {"GetScope", [](World& w) { w.Keep(w.b->GetScope()), w.Keep(w.b->GetScopeAsCollection()); }},
    {"SetScope", [](World& w) { w.Keep(w.a->SetScope(w.other.get(), true)); }},
    {"read", [](World& w) { w.Keep(w.stream.empty() || w.a->Deserialize(w.stream.data(), w.size, true)); }},
    {"bounded read",
     [](World& w) {
         w.Keep(w.a->Deserialize(w.stream.data(), static_cast<int>(w.stream.size()), w.size, true));
     }},
    {"iterator", [](World& w) { Walk<CKivDSDicomAttributeCollectionIterator>(w, *w.a); }},
};

// Every pair of forms.
TEST_F(AllocationFailureTest, OfCollections)
{
    std::vector<Operation> operations(std::begin(kFacadeOperations), std::end(kFacadeOperations));
    for (const Txt name : kAssignments)
        operations.emplace_back(name, [=](World& w) { Apply(name, *w.a, *w.b); });
    for (const Operation& operation : operations) {
        for (const Txt left : {"X2 Y2,3,4,5,6,7|M1", "{X1 Y1;Y1|M1}", "<X1 N2|M1,2;Z1;Z2>", "-"}) {
            for (const Txt right : {"X1 Y2,3,4,5,6,7 Z1+2|L1 M1,2", "{X1+2|M1;Y1r}", "<X1 N2|M1,2;Z1;Y1>"}) {
                m_Where = std::string(left) + "  " + right;
                Exhaust([=] { return World(left, right, 0, 0); }, operation);
            }
        }
    }
    EXPECT_GT(m_nFailures, 2500);
}

bool KeepVersions(const CKivDSScriptVersion& versions, CKivDSScriptVersion& into)
{
    char buffer[100];
    return into.Deserialize(buffer, versions.Serialize(buffer)) > 0;
}
bool KeepScope(CKivIPPScopeElementC& scope, CKivIPPScopeCollectionC&& collection)
{
    CKivIPPScopeCollectionC read;
    char buffer[1000];
    int size = 0;
    return collection.InitializeFromScope(&scope) && collection.AddScopeElement(&scope) &&
           collection.Serialize(buffer, &size) && read.Deserialize(buffer, size, &size);
}
bool Notifies(Subject&& subject, Subject&& subscriber)
{
    const bool subscribed = subject.Subscribe(&subscriber);
    subject.NotifySubscribers(16, 0, 0);
    return subscribed;
}

// Done once; the platform's own classes tell by their result that they failed.
const Operation kOtherOperations[] = {
    {"part =", [](World& w) { *SinglePart(w.E()) = *SinglePart(w.F()); }},
    {"part copy", [](World& w) { Count(w, Part(*MultiPart(w.F()))); }},
    {"part of a frame", [](World& w) { Count(w, Part(*MultiPart(w.F()), 1)); }},
    {"AddCollection", [](World& w) { w.Keep(w.C().AddCollection(w.b.get(), true)); }},
    {"shallow AddCollection", [](World& w) { w.Keep(w.C().AddCollection(w.b.get(), false)); }},
    {"GetCollection", [](World& w) { w.Keep(w.C().GetCollection(1, true)); }},
    {"shallow GetCollection", [](World& w) { w.Keep(w.C().GetCollection(1, false)); }},
    {"append", [](World& w) { w.Keep(w.C().AppendCompoundCollection(w.compoundB.get(), true)); }},
    {"compound copies", [](World& w) { Count(w, Series(w.D())), Count(w, Series(w.D(), true)); }},
    {"compound =", [](World& w) { w.C() = w.D(); }},
    {"compound iterator", [](World& w) { Walk<CKivDSCompoundCollectionIterator>(w, w.C()); }},
    {"compound SetScope", [](World& w) { w.Keep(w.C().SetScope(w.other.get(), true)); }},
    {"enhanced AddCollection", [](World& w) { w.Keep(w.E().AddCollection(w.b.get(), true)); }},
    {"AddMFCollection", [](World& w) { w.Keep(w.E().AddMFCollection(w.b.get(), true)); }},
    {"shallow AddMFCollection", [](World& w) { w.Keep(w.E().AddMFCollection(w.b.get(), false)); }},
    {"enhanced GetCollection", [](World& w) { w.Keep(w.E().GetCollection(true)); }},
    {"GetMFCollection", [](World& w) { w.Keep(w.E().GetMFCollection(0)); }},
    {"enhanced copies", [](World& w) { Count(w, Frames(w.F())), Count(w, Frames(w.F(), true)); }},
    {"enhanced =", [](World& w) { w.E() = w.F(); }},
    {"enhanced |=", [](World& w) { w.E() |= w.F(); }},
    {"enhanced -=", [](World& w) { w.E() -= w.F(); }},
    {"AddVersion", [](World& w) { w.Keep(w.versions.AddVersion("a modality that is longer", 3)); }},
    {"versions copy", [](World& w) { w.Keep(CKivDSScriptVersion(w.versions) == w.versions); }},
    {"versions =", [](World& w) { w.versions = w.otherVersions; }},
    {"versions written, read", [](World& w) { w.Keep(KeepVersions(w.otherVersions, w.versions)); }},
    {"Subscribe", [](World& w) { w.Keep(Notifies({}, {})); }},
    {"scope AddItem", [](World& w) { w.Told(w.scope->AddItem(2, w.item.get(), true)); }},
    {"scope GetScopeItem", [](World& w) { w.Told(w.other->GetScopeItem(2, true)); }},
    {"InitializeFromScope", [](World& w) { w.Told(w.scope->InitializeFromScope(w.other.get())); }},
    {"AddScope", [](World& w) { w.Told(w.scope->AddScope(w.other.get())); }},
    {"IsEqual", [](World& w) { w.Told(w.scope->IsEqual(w.scope.get(), -1)); }},
    {"GetDistinctPart", [](World& w) { w.Told(w.scope->GetDistinctPart(w.other.get())); }},
    {"GetCommonPart", [](World& w) { w.Told(w.scope->GetCommonPart(w.scope.get())); }},
    {"scope collection", [](World& w) { w.Told(KeepScope(*w.other, {})); }},
    {"item factory", [](World& w) { w.Told(g_pItemFactory->Clone(w.item.get())); }},
    {"frame list", [](World& w) { w.Told(w.range.SetFrames(5, w.frames)); }},
    {"range copy", [](World& w) { w.Told(CKivIPPRangeIDC(w.range) == w.range); }},
};

TEST_F(AllocationFailureTest, OfTheRest)
{
    std::vector<Operation> operations(std::begin(kOtherOperations), std::end(kOtherOperations));
    for (const Txt name : kAssignments)
        operations.emplace_back(std::string("part ") + name,
                                [=](World& w) { Apply(name, *SinglePart(w.E()), *SinglePart(w.F())); });
    for (const Operation& operation : operations)
        Exhaust([] { return World("X2", "X1 Y2,3,4,5,6,7 Z1+2|L1 M1,2", 0, 0); }, operation);
}

} // namespace
} // namespace kivds::test
