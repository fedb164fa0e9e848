#include "platform/CKivIPPScopeItemC.h"

#include "platform/standin/Support.h"

#include <memory>
#include <new>

using namespace kivds::standin;

CKivIPPScopeItemC::CKivIPPScopeItemC() = default;
CKivIPPScopeItemC::~CKivIPPScopeItemC() = default;

CKivIPPScopeItemC::CKivIPPScopeItemC(const CKivIPPScopeItemC& other) : CKivIPPSerialFormC(other)
{
    Assign(other);
}

CKivIPPScopeItemC& CKivIPPScopeItemC::operator=(const CKivIPPScopeItemC& other)
{
    CKivIPPSerialFormC::operator=(other);
    Assign(other);
    return *this;
}

bool CKivIPPScopeItemC::Assign(const CKivIPPScopeItemC& other)
{
    const bool copied = Guard(false, [&] {
        m_UID = other.m_UID;
        return true;
    });
    if (!copied) {
        Clear();
        return false;
    }
    m_bAllFrames = other.m_bAllFrames;
    m_nFirstFrame = other.m_nFirstFrame;
    m_nLastFrame = other.m_nLastFrame;
    m_bGood = other.m_bGood;
    return true;
}

void CKivIPPScopeItemC::Clear()
{
    m_UID.clear();
    m_bAllFrames = true;
    m_nFirstFrame = 0;
    m_nLastFrame = 0;
    m_bGood = false;
}

// An item's fields:
//
//    24  int32  length n of the UID
//    28  n      the UID, without NUL; none in an item that names nothing
//    +0  int32  1 when frames are named, 0 when all are meant
//    +4  int32  first frame, 0 when all are meant
//    +8  int32  last frame, 0 when all are meant
bool CKivIPPScopeItemC::Serialize(char* buffer, int* size) const
{
    if (size == nullptr)
        return false;
    StreamWriter writer(buffer, StreamKind::Item, GetType());
    writer.Text(m_UID);
    writer.Int32(m_bAllFrames ? 0 : 1);
    writer.Int32(m_nFirstFrame);
    writer.Int32(m_nLastFrame);
    return writer.Finish(size);
}

bool CKivIPPScopeItemC::Deserialize(const char* buffer, int* size)
{
    return Deserialize(buffer, DeclaredLength(buffer), size);
}

bool CKivIPPScopeItemC::Deserialize(const char* buffer, int length, int* size)
{
    Clear();
    if (size == nullptr)
        return false;
    *size = 0;
    StreamReader reader(buffer, length, StreamKind::Item);
    const std::string_view uid = reader.Text();
    const std::int32_t framesNamed = reader.Int32();
    const std::int32_t first = reader.Int32();
    const std::int32_t last = reader.Int32();
    const bool sound =
        framesNamed == 1 ? !uid.empty() && first <= last : framesNamed == 0 && first == 0 && last == 0;
    if (!reader.AtEnd() || !sound || uid.find('\0') != std::string_view::npos)
        return false;
    const bool stored = Guard(false, [&] {
        m_UID = uid;
        return true;
    });
    if (!stored)
        return false;
    SetType(reader.Type());
    m_bAllFrames = framesNamed == 0;
    m_nFirstFrame = first;
    m_nLastFrame = last;
    m_bGood = !m_UID.empty();
    *size = reader.Total();
    return true;
}

bool CKivIPPScopeItemC::Dump() const
{
    return true;
}
bool CKivIPPScopeItemC::IsGood() const
{
    return m_bGood;
}

bool CKivIPPScopeItemC::IsEqual(const CKivIPPScopeItemC* other) const
{
    return other != nullptr && kivds::SameGuid(GetType(), other->GetType()) && m_UID == other->m_UID &&
           m_bAllFrames == other->m_bAllFrames && m_nFirstFrame == other->m_nFirstFrame &&
           m_nLastFrame == other->m_nLastFrame;
}

bool CKivIPPScopeItemC::GetUID(char* buffer, int size) const
{
    const bool room = buffer != nullptr && size > 0;
    if (m_UID.empty() || !room || m_UID.size() >= static_cast<std::size_t>(size)) {
        if (room)
            buffer[0] = '\0';
        m_bGood = false;
        return false;
    }
    std::memcpy(buffer, m_UID.c_str(), m_UID.size() + 1);
    return true;
}

bool CKivIPPScopeItemC::SetUID(const char* uid)
{
    return Name(uid, true, 0, 0);
}

bool CKivIPPScopeItemC::SetUID(const char* uid, int firstFrame, int lastFrame)
{
    return Name(uid, false, firstFrame, lastFrame);
}

bool CKivIPPScopeItemC::Name(const char* uid, bool allFrames, int firstFrame, int lastFrame)
{
    const bool named = uid != nullptr && *uid != '\0' && firstFrame <= lastFrame && Guard(false, [&] {
                           m_UID = std::string(uid); // a copy first: `uid` may be the item's own
                           return true;
                       });
    if (!named) {
        Clear();
        return false;
    }
    m_bAllFrames = allFrames;
    m_nFirstFrame = firstFrame;
    m_nLastFrame = lastFrame;
    m_bGood = true;
    return true;
}

bool CKivIPPScopeItemC::GetFrames(int* firstFrame, int* lastFrame) const
{
    return !m_bAllFrames && GetFrameRun(0, firstFrame, lastFrame);
}

int CKivIPPScopeItemC::GetNumberOfFrameRuns() const
{
    return m_UID.empty() ? 0 : 1;
}

bool CKivIPPScopeItemC::GetFrameRun(int index, int* firstFrame, int* lastFrame) const
{
    if (index != 0 || m_UID.empty() || firstFrame == nullptr || lastFrame == nullptr)
        return false;
    *firstFrame = m_bAllFrames ? INT_MIN : m_nFirstFrame;
    *lastFrame = m_bAllFrames ? INT_MAX : m_nLastFrame;
    return true;
}

CKivIPPScopeItemC* CKivIPPScopeItemC::Copy() const
{
    std::unique_ptr<CKivIPPScopeItemC> copy(new (std::nothrow) CKivIPPScopeItemC());
    if (copy == nullptr || !copy->Assign(*this))
        return nullptr;
    copy->SetType(GetType());
    return copy.release();
}
