// The workload on GDCM's gdcm::DataSet.
#include "bench/peers/Driver.h"
#include "bench/peers/Peer.h"

#include <gdcmDataSet.h>
#include <gdcmElement.h>
#include <gdcmExplicitDataElement.h>
#include <gdcmSwapper.h>
#include <gdcmTrace.h>
#include <gdcmVersion.h>

#include <istream>
#include <ostream>
#include <streambuf>

namespace {

using namespace kivds::peers;
using gdcm::DataElement;
using gdcm::Tag;
using gdcm::VR;

constexpr VR::VRType kVrs[] = {VR::AE, VR::AS, VR::AT, VR::CS, VR::DA, VR::DS, VR::DT, VR::FD, VR::FL,
                               VR::IS, VR::LO, VR::LT, VR::OB, VR::OW, VR::PN, VR::SH, VR::SL, VR::SS,
                               VR::ST, VR::TM, VR::UI, VR::UL, VR::UN, VR::US, VR::UT}; // as Vr lists them

/// A stream over memory, so that nothing is copied on the way.
class MemoryBuffer : public std::streambuf
{
public:
    MemoryBuffer(char* bytes, std::size_t size)
    {
        setg(bytes, bytes, bytes + size);
        setp(bytes, bytes + size);
    }

protected:
    pos_type seekoff(off_type offset, std::ios_base::seekdir from, std::ios_base::openmode) override
    {
        char* const base = from == std::ios_base::beg   ? eback()
                           : from == std::ios_base::cur ? gptr()
                                                        : egptr();
        setg(eback(), base + offset, egptr());
        return gptr() - eback();
    }
    pos_type seekpos(pos_type position, std::ios_base::openmode which) override
    {
        return seekoff(position, std::ios_base::beg, which);
    }
};

std::string_view FieldOf(const DataElement& element)
{
    const gdcm::ByteValue* const value = element.GetByteValue();
    const char* const bytes = value ? value->GetPointer() : nullptr;
    return bytes ? std::string_view(bytes, value->GetLength()) : std::string_view("", 0);
}

template <long long kVr>
void ReadNumbers(const DataElement& element, std::string_view field, Digest& digest)
{
    using Numbers = gdcm::Element<kVr, gdcm::VM::VM1_n>;
    const auto count = static_cast<std::size_t>(std::count(field.begin(), field.end(), '\\')) + 1;
    Numbers numbers;
    numbers.SetLength(count * sizeof(typename Numbers::Type));
    numbers.SetFromDataElement(element);
    for (unsigned i = 0; i < count; ++i)
        digest.Number(static_cast<double>(numbers.GetValue(i)));
}

template <class T>
void ReadArray(std::string_view field, Digest& digest)
{
    digest.Numbers(reinterpret_cast<const T*>(field.data()), field.size() / sizeof(T));
}

struct Toolkit
{
    using Set = std::unique_ptr<gdcm::DataSet>;
    using Frames = SharedAndOwn<Toolkit>;

    static constexpr std::size_t kMostElements = 16384;

    static const char* Name() { return "GDCM"; }
    static std::string Version() { return gdcm::Version::GetVersion(); }

    static DataElement NewElement(const Tag& tag, const VR& vr, std::string_view field)
    {
        DataElement element(tag, 0, vr);
        element.SetByteValue(field.data(), static_cast<std::uint32_t>(field.size()));
        return element;
    }
    /// An element with bytes of its own: copies of elements share them.
    static DataElement Own(const DataElement& element)
    {
        return NewElement(element.GetTag(), element.GetVR(), FieldOf(element));
    }
    static void Append(gdcm::DataSet& set, const DataElement& element)
    {
        set.GetDES().insert(set.GetDES().end(), element);
    }

    static Set Build(const DataSet& dataSet)
    {
        auto set = std::make_unique<gdcm::DataSet>();
        for (const Element& element : dataSet)
            Append(*set, NewElement(Tag(element.m_Tag), kVrs[static_cast<std::size_t>(element.m_Vr)],
                                    element.m_Field));
        return set;
    }

    static void Fetch(const DataElement& element, Digest& digest)
    {
        const std::string_view field = FieldOf(element);
        switch (static_cast<VR::VRType>(element.GetVR())) {
        case VR::DS:
            ReadNumbers<VR::DS>(element, field, digest);
            break;
        case VR::IS:
            ReadNumbers<VR::IS>(element, field, digest);
            break;
        case VR::FD:
            ReadArray<double>(field, digest);
            break;
        case VR::FL:
            ReadArray<float>(field, digest);
            break;
        case VR::SL:
            ReadArray<std::int32_t>(field, digest);
            break;
        case VR::SS:
            ReadArray<std::int16_t>(field, digest);
            break;
        case VR::UL:
            ReadArray<std::uint32_t>(field, digest);
            break;
        case VR::AT:
        case VR::US:
            ReadArray<std::uint16_t>(field, digest);
            break;
        case VR::OB:
        case VR::OW:
        case VR::UN:
            digest.Bytes(field.data(), field.size());
            break;
        case VR::AS:
            ReadText(Vr::AS, field, digest);
            break;
        case VR::DA:
            ReadText(Vr::DA, field, digest);
            break;
        case VR::DT:
            ReadText(Vr::DT, field, digest);
            break;
        case VR::PN:
            ReadText(Vr::PN, field, digest);
            break;
        case VR::TM:
            ReadText(Vr::TM, field, digest);
            break;
        default:
            ReadText(Vr::LO, field, digest);
            break;
        }
    }
    static void Fetch(const Set& set, Digest& digest)
    {
        for (const DataElement& element : set->GetDES())
            Fetch(element, digest);
    }

    static std::uint32_t Find(const Set& set, std::uint32_t tag)
    {
        return set->GetDataElement(Tag(tag)).GetTag().GetElementTag();
    }

    static Set Copy(const Set& set)
    {
        auto copy = std::make_unique<gdcm::DataSet>();
        for (const DataElement& element : set->GetDES())
            Append(*copy, Own(element));
        return copy;
    }

    static std::size_t Length(const Set& set) { return set->GetLength<gdcm::ExplicitDataElement>(); }
    static void Write(const Set& set, char* bytes, std::size_t length)
    {
        MemoryBuffer buffer(bytes, length);
        std::ostream stream(&buffer);
        set->Write<gdcm::ExplicitDataElement, gdcm::SwapperNoOp>(stream);
    }
    static Set Read(const char* bytes, std::size_t length)
    {
        auto set = std::make_unique<gdcm::DataSet>();
        MemoryBuffer buffer(const_cast<char*>(bytes), length); // reads only
        std::istream stream(&buffer);
        set->Read<gdcm::ExplicitDataElement, gdcm::SwapperNoOp>(stream);
        return set;
    }

    static bool Equal(const Set& a, const Set& b) { return a->GetDES() == b->GetDES(); }

    static void Unite(Set& set, const Set& other)
    {
        auto& held = set->GetDES();
        auto at = held.begin();
        for (const DataElement& element : other->GetDES()) {
            while (at != held.end() && *at < element)
                ++at;
            if (at == held.end() || element < *at) {
                held.insert(at, Own(element));
            } else if (!(*at == element)) {
                const std::string both =
                    std::string(Unpadded(FieldOf(*at))) + '\\' + std::string(Unpadded(FieldOf(element)));
                at = held.erase(at);
                at = held.insert(at, NewElement(element.GetTag(), element.GetVR(), both));
            }
        }
    }
    static void Overlay(Set& set, const Set& other)
    {
        for (const DataElement& element : other->GetDES())
            set->Replace(Own(element));
    }

    static std::string_view ValueOf(const DataElement& element)
    {
        const std::string_view field = FieldOf(element);
        return element.GetVR() == VR::US ? field
                                         : Unpadded(field); // the only binary representation in a series here
    }
    static Set Gather(Set* sets, std::size_t count)
    {
        Gatherer<DataElement> gatherer;
        for (std::size_t i = 0; i < count; ++i) {
            gatherer.StartImage();
            for (const DataElement& element : sets[i]->GetDES())
                gatherer.Add(element.GetTag().GetElementTag(), element, ValueOf(element));
        }
        auto flat = std::make_unique<gdcm::DataSet>();
        for (const auto& [tag, entry] : gatherer.Gathered()) {
            if (entry.m_Others.empty()) {
                Append(*flat, Own(*entry.m_pFirst));
            } else {
                std::string joined = gatherer.Joined(entry);
                if (joined.size() % 2 != 0)
                    joined += ' ';
                Append(*flat, NewElement(Tag(tag), entry.m_pFirst->GetVR(), joined));
            }
        }
        return flat;
    }
};

} // namespace

int main(int argc, char** argv)
{
    gdcm::Trace::WarningOff();
    return Main<Toolkit>(argc, argv);
}
