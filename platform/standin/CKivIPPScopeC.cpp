#include "platform/CKivIPPScopeC.h"

#include "platform/CKivIPPRangeIDC.h"
#include "platform/CKivIPPScopeCollectionC.h"
#include "platform/standin/Coverage.h"
#include "platform/standin/Support.h"

#include <algorithm>
#include <new>
#include <stdexcept>
#include <tuple>
#include <utility>

namespace kivds::standin {

namespace {

bool SameTypes(const CKivIPPScopeC& a, const CKivIPPScopeC& b, int levels)
{
    for (int level = 0; level < levels; ++level)
        if (!SameGuid(a.GetScopeItemType(level), b.GetScopeItemType(level)))
            return false;
    return levels <= a.GetLevels() && levels <= b.GetLevels();
}

/// Whether an element covers something: none of its levels is without an item that names frames.
bool CoversSomething(const CKivIPPScopeElementC& element, int levels)
{
    for (int level = 0; level < levels; ++level) {
        int i = 0;
        const CKivIPPScopeItemC* item = element.GetItemPtr(level, i);
        while (item != nullptr && item->GetNumberOfFrameRuns() == 0)
            item = element.GetItemPtr(level, ++i);
        if (item == nullptr)
            return false;
    }
    return levels > 0;
}

bool Overlap(const Covered& a, const Covered& b)
{
    return a.m_UID == b.m_UID && a.m_nFirst <= b.m_nLast && b.m_nFirst <= a.m_nLast;
}

bool EndsBefore(const Covered& a, const Covered& b)
{
    return std::tie(a.m_UID, a.m_nLast) < std::tie(b.m_UID, b.m_nLast);
}

/// Calls `body` with every pair of runs that overlap, in ascending order, until it gives false.
template <class Body>
void ForEachOverlap(const Runs& a, const Runs& b, Body body)
{
    for (auto left = a.begin(), right = b.begin(); left != a.end() && right != b.end();) {
        if (Overlap(*left, *right) && !body(*left, *right))
            return;
        if (EndsBefore(*left, *right))
            ++left;
        else
            ++right;
    }
}

bool HaveCommon(const Runs& a, const Runs& b)
{
    bool common = false;
    ForEachOverlap(a, b, [&](const Covered&, const Covered&) { return !(common = true); });
    return common;
}

/// What an element covers: every combination of what its levels cover. No level of a product is empty.
using Product = std::vector<Runs>;
using Products = std::vector<Product>;

/// The products of the scope's first `levels` levels.
Products Cover(const CKivIPPScopeC& scope, int levels)
{
    Products products;
    for (const CKivIPPScopeElementC* const element : Elements(scope)) {
        if (!CoversSomething(*element, levels))
            continue;
        Product product;
        for (int level = 0; level < levels; ++level)
            product.push_back(LevelRuns(*element, level));
        products.push_back(std::move(product));
    }
    return products;
}

/// Of two scopes with the same levels; the last levels differ most, and are compared first.
bool HaveCommon(const Product& a, const Product& b)
{
    return std::equal(a.rbegin(), a.rend(), b.rbegin(),
                      [](const Runs& x, const Runs& y) { return HaveCommon(x, y); });
}

/// Refuses to make more pieces than `limit`: overlapping elements of many levels could fall into any number.
void AddPiece(Products& pieces, Product piece, std::size_t limit)
{
    if (pieces.size() >= limit)
        throw std::length_error("too many pieces");
    pieces.push_back(std::move(piece));
}

constexpr std::size_t kMaxPieces = 65536;

Products Intersect(const Products& a, const Products& b)
{
    Products pieces;
    for (const Product& left : a)
        for (const Product& right : b) {
            if (!HaveCommon(left, right))
                continue;
            Product piece;
            for (std::size_t i = 0; i < left.size(); ++i)
                piece.push_back(Common(left[i], right[i]));
            AddPiece(pieces, std::move(piece), std::max(a.size(), b.size()) + kMaxPieces);
        }
    return pieces;
}

/// Takes one product after the other out of `pieces`. What is left of a piece falls into one piece for each
/// level: inside the other product at the levels above, outside of it at this level, anything below.
Products Subtract(Products pieces, const Products& holes)
{
    const std::size_t limit = pieces.size() + kMaxPieces;
    for (const Product& hole : holes) {
        Products rest;
        for (Product& piece : pieces) {
            if (!HaveCommon(piece, hole)) {
                AddPiece(rest, std::move(piece), limit);
                continue;
            }
            for (std::size_t i = 0; i < piece.size(); ++i) {
                Runs outside = Distinct(piece[i], hole[i]);
                piece[i] = Common(piece[i], hole[i]);
                if (outside.empty())
                    continue;
                Product part = piece;
                part[i] = std::move(outside);
                AddPiece(rest, std::move(part), limit);
            }
        }
        pieces = std::move(rest);
    }
    return pieces;
}

std::unique_ptr<CKivIPPScopeElementC> MakeElement(const Product& product, const CKivIPPScopeC& like)
{
    auto element = std::make_unique<CKivIPPScopeElementC>();
    element->SetType(g_ScopeElementType);
    bool made = element->Initialize(like.GetLevels());
    for (int level = 0; made && level < like.GetLevels(); ++level) {
        made = element->SetScopeItemType(level, like.GetScopeItemType(level));
        for (const Covered& run : product[static_cast<std::size_t>(level)]) {
            std::unique_ptr<CKivIPPScopeItemC> item = MakeItem(run);
            made = made && element->AddItem(level, item.get(), false);
            if (made)
                (void)item.release(); // the element has taken it over
        }
    }
    if (!made)
        throw std::bad_alloc();
    return element;
}

/// A new scope collection of the products, with the levels of `like`; null when there are none.
CKivIPPScopeC* MakeCollection(const Products& products, const CKivIPPScopeC& like)
{
    if (products.empty())
        return nullptr;
    auto collection = std::make_unique<CKivIPPScopeCollectionC>();
    collection->SetType(g_ScopeCollectionType);
    bool made = collection->Initialize(like.GetLevels());
    for (int level = 0; level < like.GetLevels(); ++level)
        made = made && collection->SetScopeItemType(level, like.GetScopeItemType(level));
    for (const Product& product : products)
        made = made && collection->AddScopeElement(MakeElement(product, like).get());
    return made ? collection.release() : nullptr;
}

} // namespace

void Normalise(Runs& runs)
{
    std::sort(runs.begin(), runs.end(), [](const Covered& a, const Covered& b) {
        return std::tie(a.m_UID, a.m_nFirst) < std::tie(b.m_UID, b.m_nFirst);
    });
    std::size_t kept = 0;
    for (const Covered& run : runs) {
        Covered* const last = kept == 0 ? nullptr : &runs[kept - 1];
        if (last != nullptr && last->m_UID == run.m_UID &&
            (last->m_nLast == INT_MAX || run.m_nFirst <= last->m_nLast + 1))
            last->m_nLast = std::max(last->m_nLast, run.m_nLast);
        else
            runs[kept++] = run;
    }
    runs.erase(runs.begin() + static_cast<std::ptrdiff_t>(kept), runs.end());
}

Runs LevelRuns(const CKivIPPScopeElementC& element, int level)
{
    Runs runs;
    for (int i = 0; const CKivIPPScopeItemC* const item = element.GetItemPtr(level, i); ++i) {
        Covered run = {item->GetUIDPtr(), 0, 0, item};
        for (int k = 0; item->GetFrameRun(k, &run.m_nFirst, &run.m_nLast); ++k)
            runs.push_back(run);
    }
    Normalise(runs);
    return runs;
}

Runs Common(const Runs& a, const Runs& b)
{
    Runs common;
    ForEachOverlap(a, b, [&](const Covered& x, const Covered& y) {
        common.push_back(
            {x.m_UID, std::max(x.m_nFirst, y.m_nFirst), std::min(x.m_nLast, y.m_nLast), x.m_pItem});
        return true;
    });
    return common;
}

Runs Distinct(const Runs& a, const Runs& b)
{
    Runs distinct;
    auto hole = b.begin();
    for (Covered rest : a) {
        while (hole != b.end() && std::tie(hole->m_UID, hole->m_nLast) < std::tie(rest.m_UID, rest.m_nFirst))
            ++hole;
        bool left = true;
        for (auto cut = hole; left && cut != b.end() && Overlap(*cut, rest); ++cut) {
            if (cut->m_nFirst > rest.m_nFirst)
                distinct.push_back({rest.m_UID, rest.m_nFirst, cut->m_nFirst - 1, rest.m_pItem});
            left = cut->m_nLast < rest.m_nLast;
            rest.m_nFirst = left ? cut->m_nLast + 1 : rest.m_nFirst;
        }
        if (left)
            distinct.push_back(rest);
    }
    return distinct;
}

std::unique_ptr<CKivIPPScopeItemC> CopyItem(const CKivIPPScopeItemC& item)
{
    std::unique_ptr<CKivIPPScopeItemC> copy(item.Copy());
    if (copy == nullptr)
        throw std::bad_alloc();
    return copy;
}

std::unique_ptr<CKivIPPScopeItemC> MakeItem(const Covered& run)
{
    std::unique_ptr<CKivIPPScopeItemC> item = CopyItem(*run.m_pItem);
    int first = 0;
    int last = 0;
    if (item->GetNumberOfFrameRuns() == 1 && item->GetFrameRun(0, &first, &last) && first == run.m_nFirst &&
        last == run.m_nLast)
        return item;
    bool set = false;
    if (auto* const range = dynamic_cast<CKivIPPRangeIDC*>(item.get()))
        set = range->SetFrames(run.m_nFirst, run.m_nLast);
    else if (run.m_nFirst == INT_MIN && run.m_nLast == INT_MAX)
        set = item->SetUID(item->GetUIDPtr());
    else
        set = item->SetUID(item->GetUIDPtr(), run.m_nFirst, run.m_nLast);
    if (!set)
        throw std::bad_alloc();
    return item;
}

std::vector<const CKivIPPScopeElementC*> Elements(const CKivIPPScopeC& scope)
{
    std::vector<const CKivIPPScopeElementC*> elements;
    if (const auto* const element = dynamic_cast<const CKivIPPScopeElementC*>(&scope))
        elements.push_back(element);
    else if (const auto* const collection = dynamic_cast<const CKivIPPScopeCollectionC*>(&scope))
        for (int i = 0; i < collection->GetNumberOfScopeElements(); ++i)
            elements.push_back(collection->GetScopeElement(i));
    return elements;
}

bool SameLevels(const CKivIPPScopeC& a, const CKivIPPScopeC& b)
{
    return a.GetLevels() == b.GetLevels() && SameTypes(a, b, a.GetLevels());
}

} // namespace kivds::standin

using namespace kivds::standin;

const _GUID g_ScopeElementType = {
    0xC2587D19, 0x6EA3, 0x4B1F, {0x87, 0xD4, 0x31, 0x9C, 0x5A, 0xE0, 0x4B, 0xF2}};
const _GUID g_ScopeCollectionType = {
    0x51F3B60E, 0xA97D, 0x4C28, {0xBE, 0x13, 0x84, 0xF6, 0x2D, 0x0B, 0x79, 0xA5}};

CKivIPPScopeC::CKivIPPScopeC() = default;
CKivIPPScopeC::~CKivIPPScopeC() = default;

bool CKivIPPScopeC::IsEqual(const CKivIPPScopeC* scope, int level) const
{
    if (scope == nullptr)
        return false;
    const bool whole = level < 0 || level >= GetLevels();
    const int levels = whole ? GetLevels() : level + 1;
    if (!(whole ? SameLevels(*this, *scope) : SameTypes(*this, *scope, levels)))
        return false;
    return Guard(false, [&] {
        const Products own = Cover(*this, levels);
        const Products other = Cover(*scope, levels);
        return Subtract(own, other).empty() && Subtract(other, own).empty();
    });
}

bool CKivIPPScopeC::IsIncluded(const CKivIPPScopeC* scope) const
{
    if (scope == nullptr)
        return false;
    if (!SameLevels(*this, *scope))
        return IsEmpty();
    return Guard(false,
                 [&] { return Subtract(Cover(*this, GetLevels()), Cover(*scope, GetLevels())).empty(); });
}

bool CKivIPPScopeC::HasCommonPart(const CKivIPPScopeC* scope) const
{
    if (scope == nullptr || !SameLevels(*this, *scope))
        return false;
    return Guard(false, [&] {
        const Products own = Cover(*this, GetLevels());
        const Products other = Cover(*scope, GetLevels());
        return std::any_of(own.begin(), own.end(), [&](const Product& product) {
            return std::any_of(other.begin(), other.end(),
                               [&](const Product& p) { return HaveCommon(product, p); });
        });
    });
}

bool CKivIPPScopeC::IsEmpty() const
{
    return Guard(false, [&] {
        const auto elements = Elements(*this);
        return std::none_of(elements.begin(), elements.end(),
                            [&](const auto* element) { return CoversSomething(*element, GetLevels()); });
    });
}

CKivIPPScopeC* CKivIPPScopeC::GetCommonPart(const CKivIPPScopeC* scope) const
{
    if (scope == nullptr || !SameLevels(*this, *scope))
        return nullptr;
    return Guard<CKivIPPScopeC*>(nullptr, [&] {
        return MakeCollection(Intersect(Cover(*this, GetLevels()), Cover(*scope, GetLevels())), *this);
    });
}

CKivIPPScopeC* CKivIPPScopeC::GetDistinctPart(const CKivIPPScopeC* scope) const
{
    if (scope == nullptr)
        return nullptr;
    return Guard<CKivIPPScopeC*>(nullptr, [&] {
        const Products other = SameLevels(*this, *scope) ? Cover(*scope, GetLevels()) : Products();
        return MakeCollection(Subtract(Cover(*this, GetLevels()), other), *this);
    });
}
