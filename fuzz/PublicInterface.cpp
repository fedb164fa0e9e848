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

using Attributes = std::map<unsigned long, const CKivDSDicomAttribute*>;

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

/// How A and B stand to each other at one tag, before an operation.
struct STag
{
    bool m_bInA;
    bool m_bInB;
    bool m_bPrivateA;
    bool m_bPrivateB;
    bool m_bEqual;
};

/// A set operator of collections, and the tags that its result has.
struct SOperator
{
    Facade& (Facade::*m_Assign)(const Facade&); // null: m_Make is used
    Facade* (*m_Make)(const Facade&, const Facade&);
    bool (*m_Keeps)(const STag&);
};

constexpr SOperator kOperators[] = {
    {&Facade::operator+=, nullptr, [](const STag& t) { return t.m_bInA || t.m_bInB; }},
    {&Facade::operator*=, nullptr, [](const STag& t) { return t.m_bInA || t.m_bInB; }},
    {&Facade::operator|=, nullptr, [](const STag& t) { return t.m_bInA || (t.m_bInB && !t.m_bPrivateB); }},
    {&Facade::operator-=, nullptr, [](const STag& t) { return t.m_bInA && !t.m_bEqual; }},
    {&Facade::operator/=, nullptr, [](const STag& t) { return t.m_bInA && (!t.m_bInB || t.m_bPrivateB); }},
    {&Facade::operator^=, nullptr, [](const STag& t) { return t.m_bEqual; }},
    {nullptr, [](const Facade& a, const Facade& b) { return a / b; },
     [](const STag& t) { return t.m_bInA && t.m_bInB && !t.m_bPrivateA && !t.m_bEqual; }},
    {nullptr, [](const Facade& a, const Facade& b) { return a ^ b; },
     [](const STag& t) { return t.m_bEqual; }},
    {nullptr, [](const Facade& a, const Facade& b) { return a | b; },
     [](const STag& t) { return t.m_bEqual; }},
};
constexpr int kOperatorCount = static_cast<int>(std::size(kOperators));

/// The tags that one pair of parts has after an operator; `applied` says whether the operator works on it at
/// all.
std::vector<unsigned long> TagsAfter(const SOperator& how, const Attributes& a, const Attributes& b,
                                     bool applied)
{
    Attributes both = a;
    both.insert(b.begin(), b.end());
    std::vector<unsigned long> tags;
    for (const auto& [tag, unused] : both) {
        const auto inA = a.find(tag);
        const auto inB = b.find(tag);
        STag t = {inA != a.end(), inB != b.end(), false, false, false};
        t.m_bPrivateA = t.m_bInA && inA->second->IsPrivate();
        t.m_bPrivateB = t.m_bInB && inB->second->IsPrivate();
        t.m_bEqual = t.m_bInA && t.m_bInB && *inA->second == *inB->second;
        if (applied ? how.m_Keeps(t) : t.m_bInA)
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
            &Program::Copy,     &Program::Add,      &Program::Split,   &Program::Frame,
            &Program::Compound, &Program::Enhanced, &Program::Merge,   &Program::Remove,
            &Program::Read,     &Program::Scope,    &Program::Change,  &Program::Flatten};
        constexpr int longest = 16;
        for (int i = 0; i < longest && !m_Input.Empty(); ++i) {
            const int step = m_Input.Below(static_cast<int>(std::size(steps)));
            (this->*steps[step])();
        }
        for (const FacadePtr& collection : m_Collections)
            CheckFacadeStream(*collection, m_Reports);
    }

private:
    FacadePtr& Any() { return m_Collections[static_cast<std::size_t>(m_Input.Below(4))]; }

    /// Checks a collection that an operation has changed. One that has grown beyond what is worth the time is
    /// emptied, since values and members can double at every step.
    void Check(FacadePtr& collection)
    {
        constexpr int most = 2048;
        int length = 0;
        CheckFacade(*collection);
        if (!collection->IsGood() || (collection->Serialize(nullptr, length) && length > most))
            collection = std::make_unique<Facade>(true);
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
        Check(collection);
    }

    void Combine()
    {
        const SOperator& how = kOperators[m_Input.Below(kOperatorCount)];
        FacadePtr& a = Any();
        Facade& b = *Any();
        if (!IsPlain(*a) || !IsPlain(b)) {
            Apply(how, a, b);
            Check(a);
            return;
        }
        // The tags of both parts are foretold. A facade's operator passes over parts that both sides share; a
        // new collection has a multi-frame part only when both have.
        std::vector<unsigned long> expected[2];
        for (const bool multi : {false, true}) {
            const auto part = multi ? &PartAccess::MultiPart : &PartAccess::SinglePart;
            const bool applied = how.m_Make || (part(b) && part(*a) != part(b));
            expected[multi] = TagsAfter(how, AttributesOf(*a, multi), AttributesOf(b, multi), applied);
            if (how.m_Assign && a.get() == &b)
                expected[multi] = TagsAfter(how, AttributesOf(*a, multi), {}, false);
        }
        Apply(how, a, b);
        for (const bool multi : {false, true}) {
            std::vector<unsigned long> tags;
            for (const auto& [tag, unused] : AttributesOf(*a, multi))
                tags.push_back(tag);
            Require(tags == expected[multi], "a set operator keeps the tags that it should");
        }
        Check(a);
    }

    static void Apply(const SOperator& how, FacadePtr& a, const Facade& b)
    {
        if (how.m_Assign)
            ((*a).*how.m_Assign)(b);
        else
            a.reset(how.m_Make(*a, b));
        Require(a != nullptr, "a set operator gives a collection");
    }

    void Copy()
    {
        FacadePtr& to = Any();
        Facade& from = *Any();
        if (m_Input.Flag()) {
            *to = from;
            Check(to);
            return;
        }
        const bool deep = m_Input.Flag();
        FacadePtr copy(Facade::CreateCollection(&from, deep));
        Require(from.IsCompoundCollection() || !from.IsGood() || !Whole(from) || *copy == from,
                "a copy equals its original");
        if (deep && IsPlain(from)) {
            const std::optional<std::string> before = Write(from, m_Reports);
            FacadePtr other(Facade::CreateCollection(copy.get(), true));
            *other += *copy;
            other->RemoveAllAttributes();
            Require(Write(from, m_Reports) == before, "a deep copy leaves its original alone");
        }
        to = std::move(copy);
        Check(to);
    }

    /// Whether every value has data, so that a copy holds the same values; said to be not so where this
    /// cannot be seen.
    static bool Whole(Facade& facade)
    {
        bool whole = IsPlain(facade);
        const auto look = [&](const CKivDSDicomAttribute& attribute) {
            for (int i = 0; const SKivAGAttributeValue* const value = attribute.GetValuePtr(i); ++i)
                whole = whole && value->pData;
        };
        if (whole)
            Walk({facade, true, true}, look);
        return whole;
    }

    void Split()
    {
        Facade& whole = *Any();
        FacadePtr& single = Any();
        FacadePtr& multi = Any();
        Facade* made[2] = {};
        long counts[3] = {};
        whole.GetNumberOfSingleFrameAttributes(&counts[0]);
        whole.GetNumberOfMultiFrameAttributes(&counts[1]);
        const bool split = whole.Split(made[0], made[1], m_Input.Flag());
        Require(split == IsPlain(whole) && split == (made[0] != nullptr), "a plain collection can be split");
        if (!split)
            return;
        made[0]->GetNumberOfAttributes(&counts[2]);
        Require(counts[2] == counts[0], "the single-frame attributes are split off");
        single.reset(made[0]);
        Check(single);
        if (!made[1])
            return;
        made[1]->GetNumberOfAttributes(&counts[2]);
        Require(counts[2] == counts[1], "the multi-frame attributes are split off");
        multi.reset(made[1]);
        Check(multi);
    }

    void Frame()
    {
        const Facade& from = *Any();
        FacadePtr& to = Any();
        const int frame = m_Input.Below(4);
        to = std::make_unique<Facade>(from, frame, m_Input.Flag());
        Check(to);
    }

    void Compound()
    {
        auto* const compound = new CKivDSCompoundCollection;
        auto facade = std::make_unique<Facade>(compound);
        long sum = 0;
        int members = 0;
        for (int i = m_Input.Below(4); i > 0; --i) {
            Facade& member = *Any();
            long count = 0;
            member.GetNumberOfAttributes(&count);
            const bool added = compound->AddCollection(&member, m_Input.Flag());
            Require(added != member.IsCompoundCollection(), "what is not compound can be a member");
            members += added ? 1 : 0;
            sum += added ? count : 0;
        }
        if (m_Input.Flag()) {
            compound->AppendCompoundCollection(facade.get(), m_Input.Flag());
            members *= 2;
            sum *= 2;
        }
        long count = 0;
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
            Check(complete);
        }
        FacadePtr& to = Any();
        to = std::move(facade);
        Check(to);
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
        Check(merged);
    }

    void Remove()
    {
        FacadePtr& collection = Any();
        switch (m_Input.Below(4)) {
        case 0:
            if (!collection->RemoveAllAttributes())
                break;
            Walk({*collection, true, true}, [](const CKivDSDicomAttribute& attribute) {
                Require(attribute.IsPrivate(), "only private attributes survive the removal of all");
            });
            break;
        case 1:
            collection->RemoveAllSingleFrameAttributes();
            break;
        case 2:
            collection->RemoveAllMultiFrameAttributes();
            break;
        default:
            const unsigned long tag = TagOf(*BuildAttribute(m_Input));
            const bool held =
                collection->HasAttribute(tag, true, false) || collection->HasAttribute(tag, false, true);
            Require(collection->RemoveAttribute(tag) == (held && !collection->IsCompoundCollection()),
                    "what is held can be removed");
        }
        Check(collection);
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
        Check(collection);
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
        Check(collection);
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
        Check(collection);
    }

    void Flatten()
    {
        FacadePtr& to = Any();
        const Facade& from = *Any();
        if (m_Input.Flag())
            to->AddCompoundCollection(&from);
        else if (Facade* const flat = Facade::ConvertCompoundToFlatCollection(from))
            to.reset(flat);
        Check(to);
    }

    ReportWatch m_Reports;
    Input m_Input;
    std::array<FacadePtr, 4> m_Collections;
};

} // namespace

void PublicInterface(std::string_view bytes)
{
    Program(bytes).Run();
}

} // namespace kivds::fuzz
