#include "platform/CKivIPPScopeItemFactory.h"

#include "platform/standin/Support.h"

#include <memory>
#include <new>

using namespace kivds::standin;

CKivIPPScopeItemFactory::~CKivIPPScopeItemFactory() = default;

CKivIPPScopeItemC* CKivIPPScopeItemFactory::Create(const _GUID& type)
{
    return Guard<CKivIPPScopeItemC*>(nullptr, [&]() -> CKivIPPScopeItemC* {
        if (kivds::SameGuid(type, g_RangeUID))
            return new CKivIPPRangeIDC();
        for (const _GUID* const uidType : {&g_StudyUID, &g_SeriesUID, &g_ImageUID})
            if (kivds::SameGuid(type, *uidType)) {
                auto item = std::make_unique<CKivIPPScopeItemC>();
                item->SetType(type);
                return item.release();
            }
        return nullptr;
    });
}

CKivIPPScopeItemC* CKivIPPScopeItemFactory::Clone(const CKivIPPScopeItemC* item)
{
    return Guard<CKivIPPScopeItemC*>(nullptr, [&] { return item == nullptr ? nullptr : item->Copy(); });
}

namespace {

/// Holds a factory that is there before any code runs and is never destroyed: static objects of other modules
/// may use it while they come and go.
union Immortal {
    constexpr Immortal() : m_Factory() {}
    ~Immortal() {} // NOLINT(modernize-use-equals-default): the default one would not be there

    CKivIPPScopeItemFactory m_Factory;
};

Immortal s_Immortal; // NOLINT(cert-err58-cpp): constant-initialised

} // namespace

CKivIPPScopeItemFactory* g_pItemFactory = &s_Immortal.m_Factory;

const _GUID g_StudyUID = {0x3B9A61F4, 0x5C07, 0x4D8E, {0x92, 0x1B, 0x6E, 0xD4, 0x0A, 0x73, 0xC5, 0x18}};
const _GUID g_SeriesUID = {0xA4E20D7C, 0x18F3, 0x4B65, {0x8D, 0x50, 0xF7, 0x2C, 0x91, 0x3E, 0x06, 0xBA}};
const _GUID g_ImageUID = {0x7C15E8B3, 0xD29A, 0x4F41, {0xB6, 0x0E, 0x25, 0x8F, 0xC3, 0x7D, 0x94, 0x61}};
const _GUID g_RangeUID = {0xE06F9325, 0x8B4C, 0x47D0, {0xA1, 0x7E, 0x5B, 0x36, 0xE8, 0x02, 0xDF, 0x4C}};
