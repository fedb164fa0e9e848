// Input: a program for four collections: one byte names the operation, the next ones what it works on. Every
// operation is checked by what it promises, and so is the collection that it changed; at the end all are
// written and read.
#include "collection/internal/PartSharing.h"
#include "fuzz/Harnesses.h"
#include "fuzz/Support.h"
#include "platform/CKivIPPScopeElementC.h"

#include <array>
#include <iterator>
#include <map>
#include <vector>

namespace kivds::fuzz {

namespace {

using A = const CKivDSDicomAttribute*; // null where there is none
using Attributes = std::map<unsigned long, A>;

Attributes AttributesOf(Facade& facade, bool multi)
{
    Attributes attributes;
    Walk({facade, !multi, multi},
         [&](const CKivDSDicomAttribute& attribute) { attributes.emplace(TagOf(attribute), &attribute); });
    return attributes;
}

bool IsPlain(const Facade& facade)
{
    return facade.IsGood() && !facade.IsCompoundCollection() && !facade.IsEnhancedMFCollection();
}

bool Equal(A a, A b)
{
    return a && b && *a == *b;
}

/// A set operator of collections, and whether its result has a tag under which A and B hold these.
struct SOperator
{
    bool m_bNew; // gives a new collection
    void (*m_Apply)(FacadePtr& a, const Facade& b);
    bool (*m_Keeps)(A a, A b);
};

const SOperator kOperators[] = {
    {false, [](FacadePtr& a, const Facade& b) { *a += b; }, [](A a, A b) { return a || b; }},
    {false, [](FacadePtr& a, const Facade& b) { *a *= b; }, [](A a, A b) { return a || b; }},
    {false, [](FacadePtr& a, const Facade& b) { *a |= b; },
     [](A a, A b) { return a || (b && !b->IsPrivate()); }},
    {false, [](FacadePtr& a, const Facade& b) { *a -= b; }, [](A a, A b) { return a && !Equal(a, b); }},
    {false, [](FacadePtr& a, const Facade& b) { *a /= b; },
     [](A a, A b) { return a && (!b || b->IsPrivate()); }},
    {false, [](FacadePtr& a, const Facade& b) { *a ^= b; }, Equal},
    {true, [](FacadePtr& a, const Facade& b) { a.reset(*a / b); },
     [](A a, A b) { return a && b && !a->IsPrivate() && !Equal(a, b); }},
    {true, [](FacadePtr& a, const Facade& b) { a.reset(*a ^ b); }, Equal},
    {true, [](FacadePtr& a, const Facade& b) { a.reset(*a | b); }, Equal}};
constexpr int kOperatorCount = static_cast<int>(std::size(kOperators));

using Tags = std::vector<unsigned long>;

Tags TagsWhere(const Attributes& a, const Attributes& b, bool (*keeps)(A a, A b))
{
    Attributes both = a;
    both.insert(b.begin(), b.end());
    Tags tags;
    const auto in = [](const Attributes& attributes, unsigned long tag) {
        const auto found = attributes.find(tag);
        return found == attributes.end() ? nullptr : found->second;
    };
    for (const auto& [tag, unused] : both) {
        if (keeps(in(a, tag), in(b, tag)))
            tags.push_back(tag);
    }
    return tags;
}

class Program
{
public:
    explicit Program(std::string_view bytes) : m_Input(bytes)
    {
        for (FacadePtr& collection : m_Collections)
            collection = std::make_unique<Facade>(true);
    }

    void Run()
    {
        constexpr void (Program::*steps[])() = {
            &Program::Add,      &Program::Add,      &Program::Combine, &Program::Combine,
            &Program::Copy,     &Program::Element,  &Program::Split,   &Program::Frame,
            &Program::Compound, &Program::Enhanced, &Program::Merge,   &Program::Remove,
            &Program::Read,     &Program::Scope,    &Program::Change,  &Program::Flatten};
        constexpr int longest = 10;
        for (int i = 0; i < longest && !m_Input.Empty(); ++i) {
            const int step = m_Input.Below(static_cast<int>(std::size(steps)));
            (this->*steps[step])();
        }
        for (std::size_t i = 0; i < m_Collections.size(); ++i) {
            if (m_Used[i] && !IsOvergrown(*m_Collections[i]))
                CheckFacadeStream(*m_Collections[i], m_Reports);
        }
    }

private:
    using Weights = std::map<const Facade*, double>;

    /// The collections that a walk over one comes to: those that are shared count once for each way to them.
    static double Weight(const Facade& facade, Weights& known)
    {
        const auto* const compound = PartAccess::Compound(facade);
        const auto* const enhanced = PartAccess::Enhanced(facade);
        if (!compound && !enhanced)
            return 1;
        const auto [entry, isNew] =
            known.emplace(compound ? static_cast<const Facade*>(compound) : enhanced, 1);
        if (isNew) {
            for (const Facade* held :
                 compound ? PartAccess::Members(*compound) : PartAccess::Frames(*enhanced))
                entry->second += Weight(*held, known);
        }
        return entry->second;
    }

    /// Whether a collection is larger than is worth the time: values, members and frames can double at every
    /// step.
    static bool IsOvergrown(Facade& facade)
    {
        int length = 0;
        Weights known;
        return facade.IsGood() &&
               (Weight(facade, known) > 100 || (facade.Serialize(nullptr, length) && length > 2048));
    }

    /// One of the collections, emptied when it has grown too large.
    FacadePtr& Any()
    {
        const auto i = static_cast<std::size_t>(m_Input.Below(4));
        FacadePtr& collection = m_Collections[i];
        m_Used[i] = true;
        if (!collection->IsGood() || IsOvergrown(*collection))
            collection = std::make_unique<Facade>(true);
        return collection;
    }

    void Add()
    {
        FacadePtr& collection = Any();
        const bool merge = m_Input.Flag();
        AttributePtr attribute = BuildAttribute(m_Input);
        const unsigned long tag = TagOf(*attribute);
        const bool multi = attribute->IsMultiFrame();
        if (collection->AddAttribute(attribute.get(), merge)) {
            (void)attribute.release(); // the collection's now
            Require(collection->HasAttribute(tag, !multi, multi), "what was added is held");
        }
        CheckFacade(*collection);
    }

    /// Adds an element, and its attribute to a copy.
    void Element()
    {
        FacadePtr& collection = Any();
        const unsigned long tag = TakeTag(m_Input);
        const SElement element(m_Input, tag, m_Input.Flag());
        const bool plain = IsPlain(*collection);
        const FacadePtr copy(Facade::CreateCollection(collection.get(), plain));
        collection->ExpectElements(element.bytes.Size() % 64);
        const bool added =
            collection->AddElement(tag, element.representation, element.bytes.Size(), element.bytes.Data(),
                                   element.expectedCount, element.mustReplicate, element.index);
        Require(!plain || added || element.bytes.Size() == 0, "an element with bytes is added");
        AttributePtr attribute = AttributeOf(element);
        if (plain && added && copy->AddAttribute(attribute.get(), true))
            (void)attribute.release(); // the copy's now
        const std::optional<std::string> expected = plain ? Write(*copy, m_Reports) : std::nullopt;
        Require(!expected ||
                    Write(*collection, m_Reports) == expected, // a copy may hold a value without data
                "an element is added as its attribute is");
        CheckFacade(*collection);
    }

    void Combine()
    {
        const SOperator& how = kOperators[m_Input.Below(kOperatorCount)];
        FacadePtr& a = Any();
        const FacadePtr& b = Any();
        const bool plain = IsPlain(*a) && IsPlain(*b);
        // The tags of both parts are foretold. A facade's operator passes over parts that both sides share; a
        // new collection has a multi-frame part only when both have.
        bool (*const inA)(A, A) = [](A held, A) { return held != nullptr; };
        Tags expected[2];
        for (const bool multi : {false, true}) {
            const auto part = multi ? &PartAccess::MultiPart : &PartAccess::SinglePart;
            const bool applied = how.m_bNew || (part(*b) && part(*a) != part(*b));
            if (plain)
                expected[multi] =
                    TagsWhere(AttributesOf(*a, multi), AttributesOf(*b, multi), applied ? how.m_Keeps : inA);
        }
        how.m_Apply(a, *b);
        Require(a != nullptr, "a set operator gives a collection");
        for (const bool multi : {false, true})
            Require(!plain || TagsWhere(AttributesOf(*a, multi), {}, inA) == expected[multi],
                    "a set operator keeps the tags that it should");
        CheckFacade(*a);
    }

    void Copy()
    {
        FacadePtr& to = Any();
        Facade& from = *Any();
        if (m_Input.Flag()) {
            *to = from;
            CheckFacade(*to);
            return;
        }
        const bool deep = m_Input.Flag();
        const std::optional<std::string> before = IsPlain(from) ? Write(from, m_Reports) : std::nullopt;
        FacadePtr copy(Facade::CreateCollection(&from, deep));
        Require(!before || *copy == from,
                "a copy equals its original"); // but for values without data
        if (deep && IsPlain(from)) {
            FacadePtr other(Facade::CreateCollection(copy.get(), true));
            *other += *copy;
            other->RemoveAllAttributes();
            Require(Write(from, m_Reports) == before, "a deep copy leaves its original alone");
        }
        to = std::move(copy);
        CheckFacade(*to);
    }

    void Split()
    {
        Facade& whole = *Any();
        FacadePtr& single = Any();
        FacadePtr& multi = Any();
        Facade* made[2] = {};
        long counts[2] = {};
        whole.GetNumberOfSingleFrameAttributes(&counts[0]);
        whole.GetNumberOfMultiFrameAttributes(&counts[1]);
        const bool split = whole.Split(made[0], made[1], m_Input.Flag());
        Require(split == IsPlain(whole) && split == (made[0] != nullptr), "a plain collection can be split");
        for (const int part : {0, 1}) {
            if (!made[part])
                return;
            long count = 0;
            made[part]->GetNumberOfAttributes(&count);
            Require(count == counts[part], "all attributes of a part are split off");
            FacadePtr& to = part == 0 ? single : multi;
            to.reset(made[part]);
            CheckFacade(*to);
        }
    }

    void Frame()
    {
        const Facade& from = *Any();
        FacadePtr& to = Any();
        const int frame = m_Input.Below(4);
        to = std::make_unique<Facade>(from, frame, m_Input.Flag());
        CheckFacade(*to);
    }

    void Compound()
    {
        auto* const compound = new CKivDSCompoundCollection;
        auto facade = std::make_unique<Facade>(compound);
        long sum = 0, count = 0;
        int members = 0;
        for (int i = m_Input.Below(4); i > 0; --i) {
            Facade& member = *Any();
            const bool added = compound->AddCollection(&member, m_Input.Flag());
            Require(added != member.IsCompoundCollection(), "what is not compound can be a member");
            members += added;
            sum += added && member.GetNumberOfAttributes(&count) ? count : 0;
        }
        if (m_Input.Flag()) {
            compound->AppendCompoundCollection(facade.get(), m_Input.Flag());
            members *= 2;
            sum *= 2;
        }
        Require(compound->GetNumberOfCollections() == members && compound->GetNumberOfAttributes(&count) &&
                    count == sum,
                "the members' counts add up");
        Require(Walk(CKivDSCompoundCollectionIterator(*compound, true, true),
                     [](const CKivDSDicomAttribute&) {}) == sum,
                "the members are walked whole");
        Any() = std::move(facade);
    }

    void Enhanced()
    {
        auto* const enhanced = new CKivDSEnhancedMFCollection;
        auto facade = std::make_unique<Facade>(enhanced);
        Facade& regular = *Any();
        enhanced->AddCollection(&regular, m_Input.Flag());
        for (int i = m_Input.Below(4); i > 0; --i) {
            Facade& frame = *Any();
            if (!frame.IsCompoundCollection()) // such a frame could be neither written nor measured
                enhanced->AddMFCollection(&frame, m_Input.Flag());
        }
        if (!enhanced->IsGood())
            enhanced->AddCollection(std::make_unique<Facade>(true).get(), false);
        for (int i = 0; i < enhanced->GetNumberOfMFCollections(); ++i) {
            FacadePtr complete(enhanced->GetMFCollection(i));
            Require(complete && IsPlain(*complete), "every frame has its collection");
            CheckFacade(*complete);
        }
        FacadePtr& to = Any();
        to = std::move(facade);
        CheckFacade(*to);
    }

    void Merge()
    {
        const Facade& first = *Any();
        const Facade& second = *Any();
        FacadePtr& merged = Any();
        if (m_Input.Flag())
            Facade::MergeCollections(first, second, *merged);
        else
            merged->UpdateSingleFrameCollection(second, m_Input.Flag());
        CheckFacade(*merged);
    }

    void Remove()
    {
        FacadePtr& collection = Any();
        constexpr bool (Facade::*removals[])() = {&Facade::RemoveAllAttributes,
                                                  &Facade::RemoveAllSingleFrameAttributes,
                                                  &Facade::RemoveAllMultiFrameAttributes};
        const int what = m_Input.Below(4);
        if (what == 3) {
            const unsigned long tag = TagOf(*BuildAttribute(m_Input));
            const bool held =
                collection->HasAttribute(tag, true, false) || collection->HasAttribute(tag, false, true);
            Require(collection->RemoveAttribute(tag) == (held && !collection->IsCompoundCollection()),
                    "what is held can be removed");
        } else if (((*collection).*removals[what])() && what == 0) {
            Walk({*collection, true, true}, [](const CKivDSDicomAttribute& attribute) {
                Require(attribute.IsPrivate(), "only private attributes survive the removal of all");
            });
        }
        CheckFacade(*collection);
    }

    void Read()
    {
        FacadePtr& collection = Any();
        const bool versioned = m_Input.Flag();
        const ExactBlock stream(m_Input.Text(200));
        int size = 0;
        const int reported = m_Reports.Count();
        Require(collection->Deserialize(stream.Data(), stream.Size(), size, versioned) ||
                    m_Reports.Count() > reported,
                "no stream is refused without a report");
        CheckFacade(*collection);
    }

    void Scope()
    {
        FacadePtr& collection = Any();
        std::unique_ptr<CKivIPPScopeElementC> scope = BuildScope(m_Input);
        const bool copy = m_Input.Flag();
        if (collection->SetScope(scope.get(), copy)) {
            const std::unique_ptr<CKivIPPScopeC> held(collection->GetScope());
            Require(held && held->IsEqual(scope.get(), -1), "the scope is held");
            if (!copy)
                (void)scope.release(); // the collection's now
        }
        const std::unique_ptr<CKivIPPScopeC> wrapped(collection->GetScopeAsCollection());
        CheckFacade(*collection);
    }

    /// Changes an attribute in its collection.
    void Change()
    {
        FacadePtr& collection = Any();
        const AttributePtr other = BuildAttribute(m_Input);
        CKivDSDicomAttribute* held = nullptr;
        if (!collection->GetAttributePtr(TagOf(*other), &held, true, true))
            return;
        SKivAGAttributeValue value = {};
        if (m_Input.Flag())
            *held += *other;
        else if (other->GetValuePtr(0) && other->GetValuePtr(0)->pData && other->GetValue(0, &value)) {
            const bool set = held->SetValue(m_Input.Below(3), &value);
            other->DeleteAttributeValue(value);
            Require(!set || held->GetValuePtr(0), "a value that was set is held");
        }
        CheckAttribute(*held, m_Reports);
        CheckFacade(*collection);
    }

    void Flatten()
    {
        FacadePtr& to = Any();
        const Facade& from = *Any();
        if (m_Input.Flag())
            to->AddCompoundCollection(&from);
        else if (Facade* const flat = Facade::ConvertCompoundToFlatCollection(from))
            to.reset(flat);
        CheckFacade(*to);
    }

    ReportWatch m_Reports;
    Input m_Input;
    std::array<FacadePtr, 4> m_Collections;
    std::array<bool, 4> m_Used = {};
};

} // namespace

void PublicInterface(std::string_view bytes)
{
    Program(bytes).Run();
}

} // namespace kivds::fuzz
