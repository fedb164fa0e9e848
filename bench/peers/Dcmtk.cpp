// The workload on DCMTK's DcmDataset.
#include "bench/peers/Driver.h"
#include "bench/peers/Peer.h"

#include <dcmtk/config/osconfig.h>

#include <dcmtk/dcmdata/dcistrmb.h>
#include <dcmtk/dcmdata/dcostrmb.h>
#include <dcmtk/dcmdata/dctk.h>
#include <dcmtk/dcmdata/dcuid.h>

#include <charconv>

namespace {

using namespace kivds::peers;

constexpr DcmEVR kVrs[] = {EVR_AE, EVR_AS, EVR_AT, EVR_CS, EVR_DA, EVR_DS, EVR_DT, EVR_FD, EVR_FL,
                           EVR_IS, EVR_LO, EVR_LT, EVR_OB, EVR_OW, EVR_PN, EVR_SH, EVR_SL, EVR_SS,
                           EVR_ST, EVR_TM, EVR_UI, EVR_UL, EVR_UN, EVR_US, EVR_UT}; // as Vr lists them

Vr VrOf(DcmEVR vr)
{
    return static_cast<Vr>(std::find(std::begin(kVrs), std::end(kVrs), vr) - std::begin(kVrs));
}

DcmTagKey KeyOf(std::uint32_t tag)
{
    return {static_cast<Uint16>(tag >> 16), static_cast<Uint16>(tag & 0xFFFF)};
}
std::uint32_t TagOf(const DcmObject& object)
{
    return std::uint32_t{object.getGTag()} << 16 | object.getETag();
}

template <class Use>
void ForEachElement(DcmDataset& set, Use use)
{
    for (DcmObject* at = set.nextInContainer(nullptr); at; at = set.nextInContainer(at))
        use(static_cast<DcmElement&>(*at)); // a data set holds nothing else
}

std::string_view TextOf(DcmElement& element)
{
    char* text = nullptr;
    Uint32 length = 0;
    element.getString(text, length);
    return text ? std::string_view(text, length) : std::string_view();
}

/// The numbers of an IS text: the toolkit's getter walks the text from its start for each.
void ReadIntegers(std::string_view text, Digest& digest)
{
    const char* const end = text.data() + text.size();
    for (const char* at = text.data(); at < end;) {
        int number = 0;
        const char* const next = std::from_chars(at, end, number).ptr;
        if (next != at)
            digest.Number(number);
        at = next + 1;
    }
}

template <class T>
void ReadArray(DcmElement& element, OFCondition (DcmElement::*get)(T*&), Digest& digest)
{
    T* numbers = nullptr;
    if ((element.*get)(numbers).good())
        digest.Numbers(numbers, element.getLengthField() / sizeof(T));
}

struct Toolkit
{
    using Set = std::unique_ptr<DcmDataset>;
    using Frames = SharedAndOwn<Toolkit>;

    static constexpr std::size_t kMostElements = 1024; // it goes through the elements to find one

    static const char* Name() { return "DCMTK"; }
    static std::string Version() { return OFFIS_DCMTK_VERSION_STRING; }

    static DcmElement* NewElement(std::uint32_t tag, Vr vr, const char* field, std::size_t size)
    {
        DcmElement* element = nullptr;
        DcmItem::newDicomElementWithVR(element,
                                       DcmTag(KeyOf(tag), DcmVR(kVrs[static_cast<std::size_t>(vr)])));
        const auto bytes = static_cast<Uint32>(size);
        const auto count = bytes / static_cast<Uint32>(UnitOf(vr));
        switch (vr) {
        case Vr::AT:
            element->putUint16Array(reinterpret_cast<const Uint16*>(field), count);
            break;
        case Vr::FD:
            element->putFloat64Array(reinterpret_cast<const Float64*>(field), count);
            break;
        case Vr::FL:
            element->putFloat32Array(reinterpret_cast<const Float32*>(field), count);
            break;
        case Vr::OB:
        case Vr::UN:
            element->putUint8Array(reinterpret_cast<const Uint8*>(field), count);
            break;
        case Vr::OW:
        case Vr::US:
            element->putUint16Array(reinterpret_cast<const Uint16*>(field), count);
            break;
        case Vr::SL:
            element->putSint32Array(reinterpret_cast<const Sint32*>(field), count);
            break;
        case Vr::SS:
            element->putSint16Array(reinterpret_cast<const Sint16*>(field), count);
            break;
        case Vr::UL:
            element->putUint32Array(reinterpret_cast<const Uint32*>(field), count);
            break;
        default:
            element->putString(field, bytes);
            break;
        }
        return element;
    }

    static Set Build(const DataSet& dataSet)
    {
        auto set = std::make_unique<DcmDataset>();
        for (const Element& element : dataSet)
            set->insert(
                NewElement(element.m_Tag, element.m_Vr, element.m_Field.data(), element.m_Field.size()));
        return set;
    }

    static void Fetch(DcmElement& element, Digest& digest)
    {
        switch (element.ident()) {
        case EVR_AT: {
            DcmTagKey key;
            for (unsigned long i = 0; element.getTagVal(key, i).good(); ++i) {
                digest.Number(key.getGroup());
                digest.Number(key.getElement());
            }
            break;
        }
        case EVR_DS: {
            Float64 number = 0;
            OFVector<Float64> numbers;
            if (TextOf(element).find('\\') == std::string_view::npos) {
                if (element.getFloat64(number).good())
                    digest.Number(number);
            } else if (static_cast<DcmDecimalString&>(element).getFloat64Vector(numbers).good()) {
                digest.Numbers(&numbers[0], numbers.size());
            }
            break;
        }
        case EVR_IS:
            ReadIntegers(TextOf(element), digest);
            break;
        case EVR_FD:
            ReadArray(element, &DcmElement::getFloat64Array, digest);
            break;
        case EVR_FL:
            ReadArray(element, &DcmElement::getFloat32Array, digest);
            break;
        case EVR_SL:
            ReadArray(element, &DcmElement::getSint32Array, digest);
            break;
        case EVR_SS:
            ReadArray(element, &DcmElement::getSint16Array, digest);
            break;
        case EVR_UL:
            ReadArray(element, &DcmElement::getUint32Array, digest);
            break;
        case EVR_US:
            ReadArray(element, &DcmElement::getUint16Array, digest);
            break;
        case EVR_OB:
        case EVR_UN: {
            Uint8* bytes = nullptr;
            if (element.getUint8Array(bytes).good())
                digest.Bytes(bytes, element.getLengthField());
            break;
        }
        case EVR_OW: {
            Uint16* words = nullptr;
            if (element.getUint16Array(words).good())
                digest.Bytes(words, element.getLengthField());
            break;
        }
        case EVR_AS:
            ReadText(Vr::AS, TextOf(element), digest);
            break;
        case EVR_DA:
            ReadText(Vr::DA, TextOf(element), digest);
            break;
        case EVR_DT:
            ReadText(Vr::DT, TextOf(element), digest);
            break;
        case EVR_PN:
            ReadText(Vr::PN, TextOf(element), digest);
            break;
        case EVR_TM:
            ReadText(Vr::TM, TextOf(element), digest);
            break;
        default:
            ReadText(Vr::LO, TextOf(element), digest);
            break;
        }
    }
    static void Fetch(Set& set, Digest& digest)
    {
        ForEachElement(*set, [&](DcmElement& element) { Fetch(element, digest); });
    }

    static DcmElement* FindElement(DcmDataset& set, std::uint32_t tag)
    {
        DcmElement* element = nullptr;
        set.findAndGetElement(KeyOf(tag), element);
        return element;
    }
    static std::uint32_t Find(Set& set, std::uint32_t tag)
    {
        const DcmElement* const element = FindElement(*set, tag);
        return element ? TagOf(*element) : 0;
    }

    static Set Copy(const Set& set) { return std::make_unique<DcmDataset>(*set); }

    static constexpr E_TransferSyntax kSyntax = EXS_LittleEndianExplicit;

    static std::size_t Length(Set& set) { return set->getLength(kSyntax, EET_ExplicitLength); }
    static void Write(Set& set, char* bytes, std::size_t length)
    {
        DcmOutputBufferStream stream(bytes, static_cast<offile_off_t>(length));
        set->transferInit();
        set->write(stream, kSyntax, EET_ExplicitLength, nullptr);
        set->transferEnd();
    }
    static Set Read(const char* bytes, std::size_t length)
    {
        auto set = std::make_unique<DcmDataset>();
        DcmInputBufferStream stream;
        stream.setBuffer(bytes, static_cast<offile_off_t>(length));
        stream.setEos();
        set->transferInit();
        set->read(stream, kSyntax);
        set->transferEnd();
        return set;
    }

    static bool Equal(Set& a, Set& b) { return a->compare(*b) == 0; }

    /// Both are walked side by side; DcmItem::insert looks from the end on, which is slow in the middle.
    static void Unite(Set& set, const Set& other)
    {
        DcmObject* at = set->nextInContainer(nullptr);
        std::vector<DcmElement*> missing;
        ForEachElement(*other, [&](DcmElement& element) {
            const std::uint32_t tag = TagOf(element);
            while (at && TagOf(*at) < tag)
                at = set->nextInContainer(at);
            if (!at || TagOf(*at) != tag)
                missing.push_back(static_cast<DcmElement*>(element.clone()));
            else if (auto& held = static_cast<DcmElement&>(*at); held.compare(element) != 0)
                held.putString((std::string(TextOf(held)) + '\\' + std::string(TextOf(element))).c_str());
        });
        for (DcmElement* const element : missing)
            set->insert(element);
    }
    static void Overlay(Set& set, const Set& other)
    {
        ForEachElement(*other, [&](DcmElement& element) {
            set->insert(static_cast<DcmElement*>(element.clone()), OFTrue);
        });
    }

    static std::string_view FieldOf(DcmElement& element)
    {
        if (element.ident() != EVR_US) // the only binary representation in a series here
            return Unpadded(TextOf(element));
        Uint16* words = nullptr;
        element.getUint16Array(words);
        return {reinterpret_cast<const char*>(words), element.getLengthField()};
    }
    static Set Gather(Set* sets, std::size_t count)
    {
        Gatherer<DcmElement> gatherer;
        for (std::size_t i = 0; i < count; ++i) {
            gatherer.StartImage();
            ForEachElement(*sets[i], [&](DcmElement& element) {
                gatherer.Add(TagOf(element), element, FieldOf(element));
            });
        }
        auto flat = std::make_unique<DcmDataset>();
        for (const auto& [tag, entry] : gatherer.Gathered()) {
            if (entry.m_Others.empty()) {
                flat->insert(static_cast<DcmElement*>(entry.m_pFirst->clone()));
            } else {
                const std::string joined = gatherer.Joined(entry);
                flat->insert(NewElement(tag, VrOf(entry.m_pFirst->ident()), joined.data(), joined.size()));
            }
        }
        return flat;
    }
};

} // namespace

int main(int argc, char** argv)
{
    OFLog::configure(OFLogger::OFF_LOG_LEVEL);
    return Main<Toolkit>(argc, argv);
}
