// The enhanced multi-frame collection and its stream; docs/streams.md draws it.
//
//   0   .. the regular collection's stream (kind 0 or 1)
//   ..  4  number of per-frame collections
//   ..  .. their streams, in frame order
//   ..  4  total length, this field included
#include "collection/CKivDSEnhancedMFCollection.h"

#include "collection/internal/FrameCount.h"
#include "collection/internal/PartSharing.h"
#include "foundation/internal/Operation.h"
#include "platform/internal/ByteReader.h"
#include "platform/internal/ByteWriter.h"

#include <algorithm>
#include <utility>

using kivds::ByteReader;
using kivds::ByteWriter;
using kivds::Operation;
using kivds::PartAccess;
using Facade = CKivDSDicomAttributeCollection;

namespace {

constexpr const wchar_t* kRefused = L"Operation not supported on enhanced MF collections ";
constexpr int kFacadeFrame = 6; // what a facade's stream puts around this one
// What a frame's objects take where pointers have 64 bits, and counted so everywhere: a stream that one
// platform reads, every platform reads.
constexpr std::int64_t kPartCost = 112;
constexpr std::int64_t kFrameCost = 64; // with its place among the frames
constexpr std::int64_t kEnhancedCost = 72;
#if !defined(_GLIBCXX_DEBUG) && (!defined(_ITERATOR_DEBUG_LEVEL) || _ITERATOR_DEBUG_LEVEL == 0)
static_assert(sizeof(CKivDSBaseDicomAttributeCollection) <= kPartCost);
static_assert(sizeof(Facade) + 2 * sizeof(void*) <= kFrameCost);
static_assert(sizeof(CKivDSEnhancedMFCollection) <= kEnhancedCost);
#endif // containers that help in debugging are larger

std::int64_t CostOfParts(const Facade& facade)
{
    return (PartAccess::SinglePart(facade) ? kPartCost : 0) + (PartAccess::MultiPart(facade) ? kPartCost : 0);
}

// The memory of a frame and what it holds, but for attributes and frames of its own.
std::int64_t CostOfFrame(const Facade& frame)
{
    const CKivDSEnhancedMFCollection* const enhanced = PartAccess::Enhanced(frame);
    return kFrameCost + CostOfParts(frame) + (enhanced ? kEnhancedCost + CostOfParts(*enhanced) : 0);
}

} // namespace

CKivDSEnhancedMFCollection::CKivDSEnhancedMFCollection() : CKivDSDicomAttributeCollection(false) {}

CKivDSEnhancedMFCollection::CKivDSEnhancedMFCollection(const CKivDSEnhancedMFCollection& src, bool deep)
    : CKivDSDicomAttributeCollection(src, deep)
{
    CopyFrames(src, deep, Operation(L"CKivDSEnhancedMFCollection::CKivDSEnhancedMFCollection"),
               kivds::kUnexpectedError);
}

CKivDSEnhancedMFCollection& CKivDSEnhancedMFCollection::operator=(const CKivDSEnhancedMFCollection& src)
{
    if (this == &src)
        return *this;
    CKivDSEnhancedMFCollection copy(src, true); // first: `src` may live in what goes
    std::swap(m_pSingleFrameCollection, copy.m_pSingleFrameCollection);
    std::swap(m_pMultiFrameCollection, copy.m_pMultiFrameCollection);
    m_MFCollections.swap(copy.m_MFCollections);
    return *this;
}

CKivDSEnhancedMFCollection::~CKivDSEnhancedMFCollection()
{
    CKivDSEnhancedMFCollection::Clear();
}

void CKivDSEnhancedMFCollection::Clear()
{
    CKivDSDicomAttributeCollection::Clear();
    for (Facade* const frame : m_MFCollections)
        delete frame;
    m_MFCollections.clear();
}

std::vector<CKivDSDicomAttributeCollection*>& CKivDSEnhancedMFCollection::GetCollectionVect()
{
    return m_MFCollections;
}

// Appends a frame made from a collection that does not hold this one; a want of memory is reported in the
// words given.
bool CKivDSEnhancedMFCollection::AppendFrame(const Facade& frame, bool deep, const Operation& op,
                                             const wchar_t* noMemory)
{
    return op.Guard(noMemory, [&] {
        auto copy = std::make_unique<Facade>(frame, deep);
        m_MFCollections.push_back(copy.get());
        (void)copy.release(); // a frame now
        return true;
    });
}

bool CKivDSEnhancedMFCollection::AddCollection(CKivDSDicomAttributeCollection* collection, bool deep)
{
    if (!collection)
        return Operation(L"CKivDSEnhancedMFCollection::AddCollection")
            .Fail(L"Null collection pointer as input parameter");
    // The regular collection has parts and nothing else, so that no collection comes to hold itself.
    const bool added = CKivDSDicomAttributeCollection::AddCollection(PartAccess::Regular(*collection), deep);
    PartAccess::Release(m_pCompoundCollection);
    PartAccess::Release(m_pEnhancedMFCollection);
    return added;
}

bool CKivDSEnhancedMFCollection::AddMFCollection(CKivDSDicomAttributeCollection* collection, bool deep)
{
    const Operation op(L"CKivDSEnhancedMFCollection::AddMFCollection");
    if (!collection)
        return op.Fail(L"Null collection pointer as input parameter");
    return op.Guard(kivds::kUnexpectedError, [&] {
        return PartAccess::Reaches(*collection, *this)
                   ? op.Fail(kRefused)
                   : AppendFrame(*collection, deep, op, kivds::kUnexpectedError);
    });
}

// Appends copies of the frames of `src` up to the first that cannot be had: a frame's index is its number.
void CKivDSEnhancedMFCollection::CopyFrames(const CKivDSEnhancedMFCollection& src, bool deep,
                                            const Operation& op, const wchar_t* noMemory)
{
    for (const Facade* const frame : src.m_MFCollections) {
        if (!AppendFrame(*frame, deep, op, noMemory))
            return;
    }
}

CKivDSDicomAttributeCollection* CKivDSEnhancedMFCollection::GetCollection(bool deep)
{
    const Operation op(L"CKivDSEnhancedMFCollection::GetCollection");
    if (!m_pSingleFrameCollection && !m_pMultiFrameCollection) {
        op.Report(L"Object not properly initialized ");
        return nullptr;
    }
    return op.Guard(L"Unexpected error while creating the regular collection", [&] {
        auto regular = std::make_unique<Facade>(m_pSingleFrameCollection, m_pMultiFrameCollection);
        if (deep)
            regular = std::make_unique<Facade>(*regular, true);
        return regular.release();
    });
}

CKivDSDicomAttributeCollection* CKivDSEnhancedMFCollection::GetMFCollection(int index)
{
    const Operation op(L"CKivDSEnhancedMFCollection::GetMFCollection");
    if (index < 0 || index >= GetNumberOfMFCollections()) {
        op.Report(L"Invalid multiframe collection index ");
        return nullptr;
    }
    return op.Guard(L"Unexpected error while creating the MF collection", [&] {
        const Facade regular(m_pSingleFrameCollection, m_pMultiFrameCollection);
        auto complete = std::make_unique<Facade>(regular, index, true);
        *complete += *m_MFCollections[static_cast<std::size_t>(index)];
        UpdateNumberOfFrames(*complete);
        return complete.release();
    });
}

void CKivDSEnhancedMFCollection::UpdateNumberOfFrames(CKivDSDicomAttributeCollection& collection)
{
    CKivDSDicomAttribute* attribute = nullptr;
    SKivAGAttributeValue value = {};
    if (!collection.GetAttributePtr(kivds::kNumberOfFrames, &attribute, true, true) ||
        !attribute->GetValue(0, &value))
        return;
    if (kivds::WriteFrameCount(value, 1))
        attribute->SetValue(0, &value);
    attribute->DeleteAttributeValue(value);
}

int CKivDSEnhancedMFCollection::GetNumberOfMFCollections() const
{
    return static_cast<int>(m_MFCollections.size());
}

bool CKivDSEnhancedMFCollection::IsEnhancedMFCollection() const
{
    return true;
}

bool CKivDSEnhancedMFCollection::GetNumberOfFrames(int* frames)
{
    if (!IsGood() || !frames)
        return false;
    *frames = GetNumberOfMFCollections();
    return *frames != 0;
}

bool CKivDSEnhancedMFCollection::SameFrames(const CKivDSEnhancedMFCollection& b) const
{
    return std::equal(m_MFCollections.begin(), m_MFCollections.end(), b.m_MFCollections.begin(),
                      b.m_MFCollections.end(),
                      [](Facade* mine, const Facade* theirs) { return *mine == *theirs; });
}

// Reports when the frames of both cannot be paired.
bool CKivDSEnhancedMFCollection::RefuseFrames(const CKivDSEnhancedMFCollection& src,
                                              const Operation& op) const
{
    return GetNumberOfMFCollections() != src.GetNumberOfMFCollections() &&
           !op.Fail(L"Source and destination DACs have different number of frames. Operation is ignored.", 1);
}

CKivDSEnhancedMFCollection& CKivDSEnhancedMFCollection::operator|=(const CKivDSEnhancedMFCollection& src)
{
    const Operation op(L"CKivDSEnhancedMFCollection::operator |=");
    if (this == &src)
        return *this;
    PartAccess::CombineParts(*this, src, &CKivDSBaseDicomAttributeCollection::operator|=);
    if (m_MFCollections.empty()) {
        constexpr const wchar_t* noMemory = L"Insufficent memory to allocate DAC object.";
        op.Guard(noMemory, [&] {
            if (PartAccess::FramesReach(src, *this))
                return op.Fail(kRefused);
            CopyFrames(src, true, op, noMemory);
            return true;
        });
    } else if (!src.m_MFCollections.empty() && !RefuseFrames(src, op)) {
        for (std::size_t i = 0; i < m_MFCollections.size(); ++i)
            *m_MFCollections[i] |= *src.m_MFCollections[i];
    }
    return *this;
}

CKivDSEnhancedMFCollection& CKivDSEnhancedMFCollection::operator-=(const CKivDSEnhancedMFCollection& src)
{
    const Operation op(L"CKivDSEnhancedMFCollection::operator -=");
    if (this == &src)
        return *this;
    const auto subtract = [](CKivDSBaseDicomAttributeCollection* mine,
                             const CKivDSBaseDicomAttributeCollection* theirs) {
        if (mine && theirs && mine != theirs)
            *mine -= *theirs;
    };
    subtract(m_pSingleFrameCollection, PartAccess::SinglePart(src));
    subtract(m_pMultiFrameCollection, PartAccess::MultiPart(src));
    if (!src.m_MFCollections.empty() && !RefuseFrames(src, op)) {
        for (std::size_t i = 0; i < m_MFCollections.size(); ++i)
            *m_MFCollections[i] -= *src.m_MFCollections[i];
    }
    return *this;
}

// ---- stream

// The length of the stream; 0, reported in the words given, when a collection cannot tell its own.
int CKivDSEnhancedMFCollection::Measure(const Operation& op, const wchar_t* noRegular, const wchar_t* noFrame)
{
    int length = 0;
    if (!CKivDSDicomAttributeCollection::Serialize(nullptr, length) || length == 0) {
        op.Report(noRegular);
        return 0;
    }
    std::int64_t total = std::int64_t{length} + 4 + 4;
    for (Facade* const frame : m_MFCollections) {
        if (!frame->Serialize(nullptr, length) || length == 0) {
            op.Report(noFrame);
            return 0;
        }
        total += length;
    }
    const bool tooLong = kivds::StreamLength(total + kFacadeFrame) == 0;
    if (tooLong)
        op.Report(noFrame);
    return tooLong ? 0 : static_cast<int>(total);
}

int CKivDSEnhancedMFCollection::GetSize()
{
    return Measure(Operation(L"CKivDSEnhancedMFCollection::GetSize"),
                   L"Failed to retrieve the size of the regular collection",
                   L"Failed to get the size of the emf collection");
}

bool CKivDSEnhancedMFCollection::Serialize(char* buffer, int& size)
{
    const Operation op(L"CKivDSEnhancedMFCollection::Serialize");
    constexpr const wchar_t* noRegular = L"Failed to serialize the regular collections";
    constexpr const wchar_t* noFrame = L"Failed to deserialize the emf collection";
    if (!buffer) {
        size = GetSize();
        return true;
    }
    const int total = Measure(op, noRegular, noFrame);
    if (total == 0) // the caller's buffer has no size to speak of, and nothing is written
        return false;
    ByteWriter writer(buffer);
    int length = 0;
    if (!CKivDSDicomAttributeCollection::Serialize(writer.Position(), length))
        return op.Fail(noRegular);
    writer.Advance(length);
    writer.I32(GetNumberOfMFCollections());
    for (Facade* const frame : m_MFCollections) {
        if (!frame->Serialize(writer.Position(), length))
            return op.Fail(noFrame);
        writer.Advance(length);
    }
    writer.I32(total);
    size = total;
    return true;
}

bool CKivDSEnhancedMFCollection::Deserialize(const char* buffer, int& size, bool versioned)
{
    if (!buffer)
        return Operation(L"CKivDSEnhancedMFCollection::Deserialize")
            .Fail(L"Failed to deserialize the regular collections");
    ByteReader reader = ByteReader::Unbounded(buffer);
    return ReadEnhanced(reader, size, versioned);
}

bool CKivDSEnhancedMFCollection::ReadEnhanced(ByteReader& reader, int& size, bool versioned)
{
    const Operation op(L"CKivDSEnhancedMFCollection::Deserialize");
    if (!m_pSingleFrameCollection)
        m_pSingleFrameCollection = CreateCollection();
    int length = 0;
    Facade& regular = *this;
    if (!reader.Deeper() || !PartAccess::Read(regular, reader, length, versioned))
        return op.Fail(L"Failed to deserialize the regular collections");
    const int count = reader.I32();
    const int smallestFrame = versioned ? 5 : 4; // an empty one of an old form
    if (count > reader.Left() / smallestFrame)
        reader.Fail();
    for (int i = 0; i < count; ++i) {
        const bool read = reader.Ok() && op.Guard(kivds::kUnexpectedError, [&] {
            const std::int64_t unpaid = reader.Unpaid();
            auto frame = std::make_unique<Facade>(true);
            // An empty frame of an old form takes far fewer bytes than the objects that hold it.
            if (!PartAccess::Read(*frame, reader, length, versioned) ||
                !reader.Pay(reader.Unpaid() - unpaid, CostOfFrame(*frame)))
                return false;
            m_MFCollections.push_back(frame.get());
            (void)frame.release(); // a frame now
            return true;
        });
        if (!read)
            return op.Fail(L"Failed to deserialize the emf collection");
    }
    const int total = reader.I32();
    if (!reader.Ok())
        return op.Fail(L"Failed to deserialize the emf collection");
    reader.Shallower();
    size = total; // as it stands there; it is compared with nothing, and does not move the reader
    return true;
}
