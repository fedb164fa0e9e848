// The workload on this library.
#include "bench/peers/Driver.h"

#include "KivDSDataU.h"

namespace {

using namespace kivds::peers;

constexpr int kCodes[] = {0,  1,  2,  3,  4,  6,  30, 7,  8,  9,  10, 11, 27,
                          28, 26, 14, 15, 17, 18, 19, 20, 21, 23, 22, 12}; // as Vr lists them

struct Library
{
    using Facade = CKivDSDicomAttributeCollection;
    using Set = std::unique_ptr<Facade>;

    static constexpr std::size_t kMostElements = 16384;

    static const char* Name() { return "KivDSDataU"; }
    static std::string Version() { return KIVDS_VERSION; }

    static Set Build(const DataSet& dataSet)
    {
        auto set = std::make_unique<Facade>();
        set->ExpectElements(static_cast<int>(dataSet.size()));
        for (const Element& element : dataSet) {
            std::string_view field = element.Unpadded();
            int values = 1;
            if (element.m_Vr == Vr::DA || element.m_Vr == Vr::TM) {
                values += static_cast<int>(std::count(field.begin(), field.end(), '\\'));
                if (values > 1) // splitting takes the last byte for a pad
                    field = std::string_view(element.m_Field.data(), field.size() + 1);
            }
            set->AddElement(element.m_Tag, kCodes[static_cast<std::size_t>(element.m_Vr)],
                            static_cast<int>(field.size()), field.data(), values);
        }
        return set;
    }

    static void Fetch(const SKivAGAttributeValue& value, bool isText, Digest& digest)
    {
        const auto count = static_cast<std::size_t>(value.nCount);
        switch (value.eType) {
        case eAttrChar:
            if (isText)
                digest.Text({value.pData, count - 1});
            else
                digest.Bytes(value.pData, count);
            break;
        case eAttrShort:
            digest.Numbers(reinterpret_cast<const short*>(value.pData), count);
            break;
        case eAttrUShort:
            digest.Numbers(reinterpret_cast<const unsigned short*>(value.pData), count);
            break;
        case eAttrInt:
            digest.Numbers(reinterpret_cast<const int*>(value.pData), count);
            break;
        case eAttrUInt:
            digest.Numbers(reinterpret_cast<const unsigned*>(value.pData), count);
            break;
        case eAttrFloat:
            digest.Numbers(reinterpret_cast<const float*>(value.pData), count);
            break;
        case eAttrDouble:
            digest.Numbers(reinterpret_cast<const double*>(value.pData), count);
            break;
        case eAttrNone:
            break;
        }
    }

    static void Fetch(Set& set, Digest& digest)
    {
        CKivDSDicomAttributeCollectionIterator walk(*set, true, true);
        for (const CKivDSDicomAttribute* attribute = walk.GetFirstAttribute(); attribute;
             attribute = walk.GetNextAttribute()) {
            const int code = attribute->GetDicomRepresentation();
            const bool isText = code != 23 && code != 27; // UN, OB
            for (int i = 0; const SKivAGAttributeValue* const value = attribute->GetValuePtr(i); ++i) {
                if (code == 28) // OW
                    digest.Bytes(value->pData, static_cast<std::size_t>(value->nCount) * 2);
                else
                    Fetch(*value, isText, digest);
            }
        }
    }

    static std::uint32_t Find(const Set& set, std::uint32_t tag)
    {
        const CKivDSDicomAttribute* attribute = nullptr;
        unsigned long found = 0;
        if (set->GetAttribute(tag, &attribute, true, true))
            attribute->GetTag(&found);
        return static_cast<std::uint32_t>(found);
    }

    static Set Copy(const Set& set) { return std::make_unique<Facade>(*set, true); }

    static std::size_t Length(Set& set)
    {
        int size = 0;
        set->Serialize(nullptr, size);
        return static_cast<std::size_t>(size);
    }
    static void Write(Set& set, char* bytes, std::size_t length)
    {
        int size = static_cast<int>(length);
        set->Serialize(bytes, size);
    }
    static Set Read(const char* bytes, std::size_t length)
    {
        auto set = std::make_unique<Facade>();
        int size = 0;
        set->Deserialize(bytes, static_cast<int>(length), size, true);
        return set;
    }

    static bool Equal(Set& a, Set& b) { return *a == *b; }
    static void Unite(Set& set, const Set& other) { *set += *other; }

    static Set Gather(Set* sets, std::size_t count)
    {
        auto* const compound = new CKivDSCompoundCollection;
        const Facade facade(compound); // owns it
        for (std::size_t i = 0; i < count; ++i)
            compound->AddCollection(sets[i].get(), false);
        return Set(Facade::ConvertCompoundToFlatCollection(facade));
    }

    class Frames
    {
    public:
        Frames(Set shared, std::vector<Set> own)
        {
            m_Object.AddCollection(shared.get(), false);
            for (const Set& frame : own)
                m_Object.AddMFCollection(frame.get(), false);
        }
        Set Complete(std::size_t frame) { return Set(m_Object.GetMFCollection(static_cast<int>(frame))); }

    private:
        CKivDSEnhancedMFCollection m_Object;
    };
};

} // namespace

int main(int argc, char** argv)
{
    return Main<Library>(argc, argv);
}
