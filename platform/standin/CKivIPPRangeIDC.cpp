#include "platform/CKivIPPRangeIDC.h"

#include "platform/CKivIPPScopeItemFactory.h"
#include "platform/standin/Support.h"

#include <algorithm>
#include <memory>
#include <new>
#include <queue>
#include <utility>

using namespace kivds::standin;

CKivIPPRangeIDC::CKivIPPRangeIDC()
{
    CKivIPPSerialFormC::SetType(g_RangeUID);
}
CKivIPPRangeIDC::~CKivIPPRangeIDC() = default;
CKivIPPRangeIDC::CKivIPPRangeIDC(const CKivIPPRangeIDC& other) : CKivIPPScopeItemC(other)
{
    Assign(other);
}

CKivIPPRangeIDC& CKivIPPRangeIDC::operator=(const CKivIPPRangeIDC& other)
{
    CKivIPPScopeItemC::operator=(other);
    Assign(other);
    return *this;
}

bool CKivIPPRangeIDC::Assign(const CKivIPPRangeIDC& other)
{
    if (this == &other)
        return true;
    ClearFrames();
    return Guard(false, [&] {
        Runs runs = other.m_Runs;
        m_ByFrame = other.m_ByFrame;
        m_Runs = std::move(runs);
        return true;
    });
}

void CKivIPPRangeIDC::ClearFrames()
{
    m_Runs.clear();
    m_ByFrame.clear();
}

/// Lists `count` (1 or more) frames from `first` on behind the others.
void CKivIPPRangeIDC::Append(Runs& runs, int first, int count)
{
    if (runs.empty()) {
        runs.push_back({first, count, 0});
        return;
    }
    SRun& last = runs.back();
    if (first != INT_MIN && last.Last() == first - 1)
        last.m_nCount += count;
    else
        runs.push_back({first, count, last.m_nPosition + last.m_nCount});
}

/// The earliest position of every frame as runs that ascend and do not overlap; at most two for each run
/// listed. Where runs overlap the one listed first counts for all its frames, since all its positions are
/// earlier.
CKivIPPRangeIDC::Runs CKivIPPRangeIDC::ByFrame(const Runs& runs)
{
    const auto later = [](const SRun& a, const SRun& b) { return a.m_nPosition > b.m_nPosition; };
    Runs sorted = runs;
    std::sort(sorted.begin(), sorted.end(),
              [](const SRun& a, const SRun& b) { return a.m_nFirst < b.m_nFirst; });
    Runs room, result;
    room.reserve(runs.size());
    result.reserve(runs.size());
    // Those that may hold `frame`, earliest on top.
    std::priority_queue<SRun, Runs, decltype(later)> open(later, std::move(room));
    std::int64_t frame = 0;
    for (auto next = sorted.cbegin(); next != sorted.cend() || !open.empty();) {
        if (open.empty())
            frame = next->m_nFirst;
        for (; next != sorted.cend() && next->m_nFirst <= frame; ++next)
            open.push(*next);
        const SRun top = open.top();
        if (top.Last() < frame) {
            open.pop();
            continue;
        }
        const std::int64_t end = next == sorted.cend() ? INT64_MAX : next->m_nFirst;
        const std::int64_t stop = std::min<std::int64_t>(end, std::int64_t{top.Last()} + 1);
        const int first = static_cast<int>(frame);
        result.push_back({first, static_cast<int>(stop - frame), top.m_nPosition + (first - top.m_nFirst)});
        frame = stop;
    }
    return result;
}

/// Takes the runs over, in list order and as long as they can be; false (no frames) when memory runs out.
bool CKivIPPRangeIDC::SetRuns(Runs&& runs)
{
    ClearFrames();
    return Guard(false, [&] {
        const auto unordered = [](const SRun& a, const SRun& b) { return b.m_nFirst <= a.Last(); };
        if (std::adjacent_find(runs.begin(), runs.end(), unordered) != runs.end())
            m_ByFrame = ByFrame(runs);
        m_Runs = std::move(runs);
        return true;
    });
}

bool CKivIPPRangeIDC::SetFrames(int count, const int* frames)
{
    ClearFrames();
    if (count < 0 || frames == nullptr)
        return false;
    return Guard(false, [&] {
        Runs runs;
        for (int i = 0; i < count; ++i)
            Append(runs, frames[i], 1);
        return SetRuns(std::move(runs));
    });
}

bool CKivIPPRangeIDC::SetFrames(int first, int last)
{
    ClearFrames();
    const std::int64_t count = std::int64_t{last} - first + 1;
    if (count < 1 || count > INT_MAX)
        return false;
    return Guard(false, [&] { return SetRuns({{first, static_cast<int>(count), 0}}); });
}

bool CKivIPPRangeIDC::GetPosition(int frame, int* position) const
{
    const Runs& runs = m_ByFrame.empty() ? m_Runs : m_ByFrame;
    const auto above = std::upper_bound(runs.begin(), runs.end(), frame,
                                        [](int value, const SRun& run) { return value < run.m_nFirst; });
    if (above == runs.begin() || (above - 1)->Last() < frame)
        return false;
    if (position != nullptr)
        *position = (above - 1)->m_nPosition + (frame - (above - 1)->m_nFirst);
    return true;
}

int CKivIPPRangeIDC::GetNumberOfFrames() const
{
    return m_Runs.empty() ? 0 : m_Runs.back().m_nPosition + m_Runs.back().m_nCount;
}

bool CKivIPPRangeIDC::operator==(const CKivIPPRangeIDC& other) const
{
    return std::equal(
        m_Runs.begin(), m_Runs.end(), other.m_Runs.begin(), other.m_Runs.end(),
        [](const SRun& a, const SRun& b) { return a.m_nFirst == b.m_nFirst && a.m_nCount == b.m_nCount; });
}

// A range's fields:
//
//    24  int32  number n of runs
//    28  8 n    for each run, in list order: int32 first frame, int32 number of frames (1 or more)
bool CKivIPPRangeIDC::Serialize(char* buffer, int* size) const
{
    if (size == nullptr)
        return false;
    StreamWriter writer(buffer, StreamKind::Range, GetType());
    writer.Count(m_Runs.size());
    for (const SRun& run : m_Runs) {
        writer.Int32(run.m_nFirst);
        writer.Int32(run.m_nCount);
    }
    return writer.Finish(size);
}

bool CKivIPPRangeIDC::Deserialize(const char* buffer, int length, int* size)
{
    ClearFrames();
    if (size == nullptr)
        return false;
    *size = 0;
    StreamReader reader(buffer, length, StreamKind::Range);
    const bool read = Guard(false, [&] {
        Runs runs;
        const std::size_t number = reader.Count(8);
        runs.reserve(number);
        std::int64_t frames = 0;
        for (std::size_t i = 0; i < number; ++i) {
            const std::int32_t first = reader.Int32();
            const std::int32_t count = reader.Int32();
            frames += count;
            if (count < 1 || first > INT_MAX - (count - 1) || frames > INT_MAX)
                return false;
            Append(runs, first, count);
        }
        return reader.AtEnd() && SetRuns(std::move(runs));
    });
    if (!read)
        return false;
    SetType(reader.Type());
    *size = reader.Total();
    return true;
}

bool CKivIPPRangeIDC::Dump() const
{
    return true;
}
bool CKivIPPRangeIDC::IsGood() const
{
    return !m_Runs.empty();
}

bool CKivIPPRangeIDC::IsEqual(const CKivIPPScopeItemC* other) const
{
    const auto* const range = dynamic_cast<const CKivIPPRangeIDC*>(other);
    return range != nullptr && kivds::SameGuid(GetType(), range->GetType()) && *this == *range;
}

bool CKivIPPRangeIDC::SetUID(const char*)
{
    return false;
}
bool CKivIPPRangeIDC::SetUID(const char*, int, int)
{
    return false;
}

int CKivIPPRangeIDC::GetNumberOfFrameRuns() const
{
    return static_cast<int>(m_Runs.size());
}

bool CKivIPPRangeIDC::GetFrameRun(int index, int* firstFrame, int* lastFrame) const
{
    if (index < 0 || index >= GetNumberOfFrameRuns() || firstFrame == nullptr || lastFrame == nullptr)
        return false;
    const SRun& run = m_Runs[static_cast<std::size_t>(index)];
    *firstFrame = run.m_nFirst;
    *lastFrame = run.Last();
    return true;
}

CKivIPPScopeItemC* CKivIPPRangeIDC::Copy() const
{
    std::unique_ptr<CKivIPPRangeIDC> copy(new (std::nothrow) CKivIPPRangeIDC());
    if (copy == nullptr || !copy->Assign(*this))
        return nullptr;
    copy->SetType(GetType());
    return copy.release();
}
