// What scopes cover, as values to calculate with; internal to the scope classes. Nothing here owns an item:
// runs stay valid while the scope that they were taken from does not change. What runs out of memory throws.
#pragma once

#include "platform/CKivIPPScopeElementC.h"

#include <memory>
#include <string_view>
#include <vector>

namespace kivds::standin {

constexpr int kMaxLevels = 16;
constexpr _GUID kNoType = {};

/// The frames first..last of one UID. Frame ranges have an empty UID.
struct Covered
{
    std::string_view m_UID;
    int m_nFirst;
    int m_nLast;
    const CKivIPPScopeItemC* m_pItem; // an item that names them
};

/// What one level covers: ascending by UID and frame, as few runs as possible.
using Runs = std::vector<Covered>;

/// Sorts runs and joins those that overlap or touch.
void Normalise(Runs& runs);
Runs LevelRuns(const CKivIPPScopeElementC& element, int level);
Runs Common(const Runs& a, const Runs& b);
Runs Distinct(const Runs& a, const Runs& b);

/// A copy of `item`; throws where Copy gives null.
std::unique_ptr<CKivIPPScopeItemC> CopyItem(const CKivIPPScopeItemC& item);
/// An item of the same kind as those it stems from, which names just the run.
std::unique_ptr<CKivIPPScopeItemC> MakeItem(const Covered& run);

/// The elements of an element (itself) or of a collection; any other kind of scope has none.
std::vector<const CKivIPPScopeElementC*> Elements(const CKivIPPScopeC& scope);
/// Whether both have as many levels, of the same types.
bool SameLevels(const CKivIPPScopeC& a, const CKivIPPScopeC& b);

} // namespace kivds::standin
