// Part of each DLL that GCC builds for 32-bit Windows: makes sure that exceptions inside the DLL are caught
// there. There, throwing works through tables of frames that a module's start-up code registers with the
// unwinder. When the process has loaded libgcc_s_dw2-1.dll, because its program uses the compiler's runtime
// as DLLs, the start-up code registers the tables there and only there; the unwinder that is linked into this
// DLL would know of no frame, and the first exception, such as one for memory that ran out, would end the
// process. So they are registered here as well.
#include <windows.h>

extern "C" {
void __register_frame_info(const void* tables, void* entry); // of libgcc
extern IMAGE_DOS_HEADER __ImageBase;                         // of the linker: this module's first byte
extern const unsigned char kivds_InUnwindTables[];
}

// A label in the section of the tables, which the linker offers no other name for.
asm(".section .eh_frame,\"dr\"\n_kivds_InUnwindTables:\n.text");

namespace {

/// libgcc's list entry, whose size it keeps to itself: six pointers in GCC 12.
void* s_Entry[16];

/// The section of this module that holds `address`.
const unsigned char* SectionOf(const unsigned char* address)
{
    const auto* const image = reinterpret_cast<const unsigned char*>(&__ImageBase);
    const auto* const headers = reinterpret_cast<const IMAGE_NT_HEADERS*>(image + __ImageBase.e_lfanew);
    const IMAGE_SECTION_HEADER* section = IMAGE_FIRST_SECTION(headers);
    while (address < image + section->VirtualAddress ||
           address >= image + section->VirtualAddress + section->Misc.VirtualSize)
        ++section;
    return image + section->VirtualAddress;
}

const bool s_Registered = [] {
    if (GetModuleHandleW(L"libgcc_s_dw2-1.dll"))
        __register_frame_info(SectionOf(kivds_InUnwindTables), s_Entry);
    // An exception of the program's own that ends in this DLL, such as a listener's, is unwound by the
    // program's unwinder with help of this one, which the first throw sets up.
    try {
        throw 0;
    } catch (int) {
    }
    return true;
}();

} // namespace
