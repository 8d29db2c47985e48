// A libc.so for the library's file as it is on the device, on 64-bit Arm Linux, preloaded: the C
// functions are those of the libc that this one needs, and what Android's loader and C library do
// for the file and glibc's do not is done here, before any code of the file runs.

#include <elf.h>
#include <link.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstring>

namespace {

constexpr const char* kLibrary = "libimgtune.ispfeature.so";
constexpr ElfW(Sxword) kAndroidRelr = 0x6fffe000;
constexpr ElfW(Sxword) kAndroidRelrSize = 0x6fffe001;

/// Compiled code finds the stack guard 40 bytes above the thread pointer. That place is in the
/// first block of thread-local data, which is the program's or, where it has none, this one.
constexpr std::uintptr_t kGuardOffset = 40;
alignas(16) thread_local std::uintptr_t guard_block[8] = {1, 2, 3, 4, 5, 6, 7, 8};

[[noreturn]] void fail(const char* what) {
    std::fprintf(stderr, "libc.so for %s: %s\n", kLibrary, what);
    _exit(2);
}

void add_base(ElfW(Addr) base, ElfW(Addr) at) {
    *reinterpret_cast<ElfW(Addr)*>(at) += base;
}

/// Packed relative relocations: an even entry is an address to relocate, an odd one a bitmap of the
/// 63 words that follow the last.
void relocate(ElfW(Addr) base, const ElfW(Addr) * entries, std::size_t count) {
    ElfW(Addr) next = 0;
    for (std::size_t i = 0; i < count; ++i) {
        if (entries[i] % 2 == 0) {
            add_base(base, base + entries[i]);
            next = base + entries[i] + 8;
            continue;
        }
        for (unsigned bit = 1; bit < 64; ++bit) {
            if ((entries[i] >> bit & 1) != 0) add_base(base, next + 8 * (bit - 1));
        }
        next += 63 * 8;
    }
}

int prepare(dl_phdr_info* file, std::size_t, void* found) {
    const char* name = std::strrchr(file->dlpi_name, '/');
    if (name == nullptr || std::strcmp(name + 1, kLibrary) != 0) return 0;
    const ElfW(Addr) base = file->dlpi_addr;
    ElfW(Addr) relocations = 0;
    std::size_t size = 0;
    const ElfW(Phdr)* read_only = nullptr;
    for (unsigned i = 0; i < file->dlpi_phnum; ++i) {
        const ElfW(Phdr)& header = file->dlpi_phdr[i];
        if (header.p_type == PT_GNU_RELRO) read_only = &header;
        if (header.p_type != PT_DYNAMIC) continue;
        const auto* entry = reinterpret_cast<const ElfW(Dyn)*>(base + header.p_vaddr);
        for (; entry->d_tag != DT_NULL; ++entry) {
            if (entry->d_tag == kAndroidRelr) relocations = base + entry->d_un.d_ptr;
            if (entry->d_tag == kAndroidRelrSize) size = entry->d_un.d_val;
        }
    }
    if (relocations == 0 || read_only == nullptr) fail("it has no packed relocations or no RELRO");
    // Whole pages: a last one that is partly read-only is so altogether.
    const auto page = static_cast<ElfW(Addr)>(getpagesize());
    const ElfW(Addr) begin = (base + read_only->p_vaddr) / page * page;
    const ElfW(Addr) end =
        (base + read_only->p_vaddr + read_only->p_memsz + page - 1) / page * page;
    auto* const pages = reinterpret_cast<void*>(begin);
    if (mprotect(pages, end - begin, PROT_READ | PROT_WRITE) != 0) fail("mprotect fails");
    relocate(base, reinterpret_cast<const ElfW(Addr)*>(relocations), size / sizeof(ElfW(Addr)));
    if (mprotect(pages, end - begin, PROT_READ) != 0) fail("mprotect fails");
    *static_cast<bool*>(found) = true;
    return 1;
}

__attribute__((constructor)) void load() {
    const std::uintptr_t guard =
        reinterpret_cast<std::uintptr_t>(__builtin_thread_pointer()) + kGuardOffset;
    const auto block = reinterpret_cast<std::uintptr_t>(guard_block);
    if (guard < block || guard >= block + sizeof(guard_block)) fail("the guard's place is taken");
    bool found = false;
    dl_iterate_phdr(prepare, &found);
    if (found) std::fprintf(stderr, "loaded as on Android: %s\n", kLibrary);
}

}  // namespace
