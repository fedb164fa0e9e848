// The workload on vtk-dicom's vtkDICOMMetaData. It writes and reads nothing but files, so the stream is
// written here: Explicit VR Little Endian (PS3.5 7.1), straight from and into the values.
#include "bench/peers/Driver.h"
#include "bench/peers/Peer.h"

#include <vtkDICOMMetaData.h>
#include <vtkDICOMValue.h>
#include <vtkSmartPointer.h>

namespace {

using namespace kivds::peers;

const vtkDICOMVR kVrs[] = {
    vtkDICOMVR::AE, vtkDICOMVR::AS, vtkDICOMVR::AT, vtkDICOMVR::CS, vtkDICOMVR::DA,
    vtkDICOMVR::DS, vtkDICOMVR::DT, vtkDICOMVR::FD, vtkDICOMVR::FL, vtkDICOMVR::IS,
    vtkDICOMVR::LO, vtkDICOMVR::LT, vtkDICOMVR::OB, vtkDICOMVR::OW, vtkDICOMVR::PN,
    vtkDICOMVR::SH, vtkDICOMVR::SL, vtkDICOMVR::SS, vtkDICOMVR::ST, vtkDICOMVR::TM,
    vtkDICOMVR::UI, vtkDICOMVR::UL, vtkDICOMVR::UN, vtkDICOMVR::US, vtkDICOMVR::UT}; // as Vr lists them

vtkDICOMTag TagOf(std::uint32_t tag)
{
    return {static_cast<int>(tag >> 16), static_cast<int>(tag & 0xFFFF)};
}

vtkDICOMVR VrNamed(char first, char second)
{
    const char name[] = {first, second, '\0'};
    return vtkDICOMVR(name);
}

template <class T>
vtkDICOMValue NumbersOf(vtkDICOMVR vr, T* (vtkDICOMValue::*allocate)(vtkDICOMVR, std::size_t),
                        std::string_view field)
{
    vtkDICOMValue value;
    std::memcpy((value.*allocate)(vr, field.size() / sizeof(T)), field.data(), field.size());
    return value;
}

vtkDICOMValue NewValue(vtkDICOMVR vr, std::string_view field)
{
    using Value = vtkDICOMValue;
    if (vr.HasTextValue())
        return Value(vr, field.data(), field.size());
    if (vr == vtkDICOMVR::US)
        return NumbersOf(vr, &Value::AllocateUnsignedShortData, field);
    if (vr == vtkDICOMVR::SS || vr == vtkDICOMVR::OW)
        return NumbersOf(vr, &Value::AllocateShortData, field);
    if (vr == vtkDICOMVR::UL)
        return NumbersOf(vr, &Value::AllocateUnsignedIntData, field);
    if (vr == vtkDICOMVR::SL)
        return NumbersOf(vr, &Value::AllocateIntData, field);
    if (vr == vtkDICOMVR::FL)
        return NumbersOf(vr, &Value::AllocateFloatData, field);
    if (vr == vtkDICOMVR::FD)
        return NumbersOf(vr, &Value::AllocateDoubleData, field);
    if (vr != vtkDICOMVR::AT)
        return NumbersOf(vr, &Value::AllocateUnsignedCharData, field);
    Value value;
    vtkDICOMTag* const tags = value.AllocateTagData(vr, field.size() / 4);
    for (std::size_t i = 0; i + 4 <= field.size(); i += 4) {
        std::uint16_t words[2];
        std::memcpy(words, field.data() + i, 4);
        tags[i / 4] = vtkDICOMTag(words[0], words[1]);
    }
    return value;
}

std::string_view TextOf(const vtkDICOMValue& value)
{
    return {value.GetCharData(), value.GetVL()};
}

/// The value's bytes as they lie in memory; empty for AT, which is held in another order.
std::string_view FieldOf(const vtkDICOMValue& value)
{
    const void* bytes = value.GetCharData();
    const auto either = [&](const void* other) {
        if (!bytes)
            bytes = other;
    };
    either(value.GetUnsignedShortData());
    either(value.GetShortData());
    either(value.GetUnsignedIntData());
    either(value.GetIntData());
    either(value.GetFloatData());
    either(value.GetDoubleData());
    either(value.GetUnsignedCharData());
    return {static_cast<const char*>(bytes), bytes ? value.GetVL() : 0};
}

/// The numbers of a DS or IS text through the toolkit's getter.
template <class T>
void ReadNumbers(const vtkDICOMValue& value, Digest& digest)
{
    constexpr std::size_t few = 16;
    const std::size_t count = value.GetNumberOfValues();
    T first[few];
    std::vector<T> rest(count > few ? count : 0);
    T* const numbers = count > few ? rest.data() : first;
    value.GetValues(numbers, count);
    digest.Numbers(numbers, count);
}

struct Toolkit
{
    using Set = vtkSmartPointer<vtkDICOMMetaData>;
    using Frames = SharedAndOwn<Toolkit>;

    static constexpr std::size_t kMostElements = 16384;

    static const char* Name() { return "vtk-dicom"; }
    static std::string Version() { return DICOM_VERSION; }

    static Set Build(const DataSet& dataSet)
    {
        auto set = Set::New();
        for (const Element& element : dataSet)
            set->Set(TagOf(element.m_Tag),
                     NewValue(kVrs[static_cast<std::size_t>(element.m_Vr)], element.m_Field));
        return set;
    }

    static void Fetch(const vtkDICOMValue& value, Digest& digest)
    {
        const vtkDICOMVR vr = value.GetVR();
        const std::size_t count = value.GetNumberOfValues();
        if (vr == vtkDICOMVR::DS) {
            ReadNumbers<double>(value, digest);
        } else if (vr == vtkDICOMVR::IS) {
            ReadNumbers<int>(value, digest);
        } else if (vr.HasTextValue()) {
            const Vr kind = vr == vtkDICOMVR::DA   ? Vr::DA
                            : vr == vtkDICOMVR::TM ? Vr::TM
                            : vr == vtkDICOMVR::PN ? Vr::PN
                            : vr == vtkDICOMVR::DT ? Vr::DT
                            : vr == vtkDICOMVR::AS ? Vr::AS
                                                   : Vr::LO;
            ReadText(kind, TextOf(value), digest);
        } else if (vr == vtkDICOMVR::US) {
            digest.Numbers(value.GetUnsignedShortData(), count);
        } else if (vr == vtkDICOMVR::SS) {
            digest.Numbers(value.GetShortData(), count);
        } else if (vr == vtkDICOMVR::UL) {
            digest.Numbers(value.GetUnsignedIntData(), count);
        } else if (vr == vtkDICOMVR::SL) {
            digest.Numbers(value.GetIntData(), count);
        } else if (vr == vtkDICOMVR::FL) {
            digest.Numbers(value.GetFloatData(), count);
        } else if (vr == vtkDICOMVR::FD) {
            digest.Numbers(value.GetDoubleData(), count);
        } else if (vr == vtkDICOMVR::AT) {
            for (std::size_t i = 0; i < count; ++i) {
                digest.Number(value.GetTagData()[i].GetGroup());
                digest.Number(value.GetTagData()[i].GetElement());
            }
        } else if (vr == vtkDICOMVR::OW) {
            digest.Bytes(value.GetShortData(), value.GetVL());
        } else {
            digest.Bytes(value.GetUnsignedCharData(), value.GetVL());
        }
    }
    static void Fetch(const Set& set, Digest& digest)
    {
        const auto end = set->End();
        for (auto at = set->Begin(); at != end; ++at)
            Fetch(at->GetValue(), digest);
    }

    static std::uint32_t Find(const Set& set, std::uint32_t tag)
    {
        const auto found = set->Find(TagOf(tag));
        return found != set->End() ? found->GetTag().GetKey() : 0;
    }

    /// Values are shared, and replaced rather than changed, so a copy is as good as a deep one.
    static Set Copy(const Set& set)
    {
        auto copy = Set::New();
        copy->DeepCopy(set);
        return copy;
    }

    static std::size_t Length(const Set& set)
    {
        std::size_t length = 0;
        const auto end = set->End();
        for (auto at = set->Begin(); at != end; ++at)
            length += (at->GetVR().HasLongVL() ? 12 : 8) + at->GetValue().GetVL();
        return length;
    }
    static void Write(const Set& set, char* bytes, std::size_t)
    {
        const auto put = [&bytes](const auto& number) {
            std::memcpy(bytes, &number, sizeof number);
            bytes += sizeof number;
        };
        const auto end = set->End();
        for (auto at = set->Begin(); at != end; ++at) {
            const vtkDICOMValue& value = at->GetValue();
            const vtkDICOMVR vr = value.GetVR();
            put(static_cast<std::uint16_t>(at->GetTag().GetGroup()));
            put(static_cast<std::uint16_t>(at->GetTag().GetElement()));
            *bytes++ = vr.GetText()[0];
            *bytes++ = vr.GetText()[1];
            const std::uint32_t length = value.GetVL();
            if (vr.HasLongVL()) {
                put(std::uint16_t{0});
                put(length);
            } else {
                put(static_cast<std::uint16_t>(length));
            }
            if (const vtkDICOMTag* const tags = value.GetTagData()) {
                for (std::size_t i = 0; i < value.GetNumberOfValues(); ++i) {
                    put(static_cast<std::uint16_t>(tags[i].GetGroup()));
                    put(static_cast<std::uint16_t>(tags[i].GetElement()));
                }
            } else {
                const std::string_view field = FieldOf(value);
                if (!field.empty())
                    std::memcpy(bytes, field.data(), field.size());
                bytes += field.size();
            }
        }
    }
    static Set Read(const char* bytes, std::size_t length)
    {
        auto set = Set::New();
        const char* const end = bytes + length;
        const auto get = [&bytes](auto& number) {
            std::memcpy(&number, bytes, sizeof number);
            bytes += sizeof number;
        };
        while (end - bytes >= 8) {
            std::uint16_t group = 0;
            std::uint16_t element = 0;
            std::uint16_t brief = 0;
            get(group);
            get(element);
            const vtkDICOMVR vr = VrNamed(bytes[0], bytes[1]);
            bytes += 2;
            get(brief);
            std::uint32_t size = brief;
            if (vr.HasLongVL()) {
                if (end - bytes < 4)
                    break;
                get(size);
            }
            if (static_cast<std::size_t>(end - bytes) < size)
                break;
            set->Set(vtkDICOMTag(group, element), NewValue(vr, {bytes, size}));
            bytes += size;
        }
        return set;
    }

    static bool Equal(const Set& a, const Set& b)
    {
        if (a->GetNumberOfDataElements() != b->GetNumberOfDataElements())
            return false;
        const auto end = a->End();
        auto other = b->Begin();
        for (auto at = a->Begin(); at != end; ++at, ++other) {
            if (*at != *other)
                return false;
        }
        return true;
    }

    static void Unite(Set& set, const Set& other)
    {
        const auto end = other->End();
        for (auto at = other->Begin(); at != end; ++at) {
            const vtkDICOMValue& held = set->Get(at->GetTag());
            if (!held.IsValid()) {
                set->Set(at->GetTag(), at->GetValue());
            } else if (held != at->GetValue()) {
                const std::string both =
                    std::string(Unpadded(TextOf(held))) + '\\' + std::string(TextOf(at->GetValue()));
                set->Set(at->GetTag(), NewValue(held.GetVR(), both));
            }
        }
    }
    static void Overlay(Set& set, const Set& other)
    {
        const auto end = other->End();
        for (auto at = other->Begin(); at != end; ++at)
            set->Set(at->GetTag(), at->GetValue());
    }

    static Set Gather(Set* sets, std::size_t count)
    {
        Gatherer<vtkDICOMValue> gatherer;
        for (std::size_t i = 0; i < count; ++i) {
            gatherer.StartImage();
            const auto end = sets[i]->End();
            for (auto at = sets[i]->Begin(); at != end; ++at) {
                const vtkDICOMValue& value = at->GetValue();
                const std::string_view field = FieldOf(value);
                gatherer.Add(at->GetTag().GetKey(), value,
                             value.GetVR().HasTextValue() ? Unpadded(field) : field);
            }
        }
        auto flat = Set::New();
        for (const auto& [tag, entry] : gatherer.Gathered())
            flat->Set(TagOf(tag), entry.m_Others.empty()
                                      ? *entry.m_pFirst
                                      : NewValue(entry.m_pFirst->GetVR(), gatherer.Joined(entry)));
        return flat;
    }
};

} // namespace

int main(int argc, char** argv)
{
    return Main<Toolkit>(argc, argv);
}
