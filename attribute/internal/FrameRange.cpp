#include "attribute/internal/FrameRange.h"

#include "platform/CKivIPPScopeItemFactory.h"

namespace kivds {

namespace {

template <class Make>
std::unique_ptr<CKivIPPRangeIDC> FromFactory(Make make) noexcept
{
    std::unique_ptr<CKivIPPRangeIDC> range;
    Guarded([&] {
        std::unique_ptr<CKivIPPScopeItemC> item(g_pItemFactory ? make(*g_pItemFactory) : nullptr);
        range.reset(dynamic_cast<CKivIPPRangeIDC*>(item.get()));
        if (range)
            (void)item.release(); // the same object, held by `range` now
        return true;
    });
    return range;
}

} // namespace

std::unique_ptr<CKivIPPRangeIDC> NewFrameRange() noexcept
{
    return FromFactory([](CKivIPPScopeItemFactory& factory) { return factory.Create(g_RangeUID); });
}

std::unique_ptr<CKivIPPRangeIDC> CloneFrameRange(const CKivIPPRangeIDC& range) noexcept
{
    return FromFactory([&](CKivIPPScopeItemFactory& factory) { return factory.Clone(&range); });
}

} // namespace kivds
