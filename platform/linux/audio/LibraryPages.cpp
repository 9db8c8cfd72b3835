// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/audio/LibraryPages.h"

#include <cstdint>
#include <link.h>
#include <sys/mman.h>
#include <unistd.h>

namespace zofra {

namespace {

/// The first seconds of the first stream touch what a stream needs; after that the rest is known to be
/// unused.
constexpr std::chrono::milliseconds settled{3000};

/// Such code was patched by the loader: its pages are no longer those of the file.
bool hasPatchedCode(const dl_phdr_info& info) {
    for (int i = 0; i < info.dlpi_phnum; ++i) {
        const auto& segment = info.dlpi_phdr[i];
        if (segment.p_type != PT_DYNAMIC)
            continue;
        // NOLINTNEXTLINE(performance-no-int-to-ptr): the loader tells addresses as numbers.
        const auto* entry = reinterpret_cast<const ElfW(Dyn)*>(info.dlpi_addr + segment.p_vaddr);
        for (; entry->d_tag != DT_NULL; ++entry) {
            if (entry->d_tag == DT_TEXTREL ||
                (entry->d_tag == DT_FLAGS && (entry->d_un.d_val & DF_TEXTREL) != 0))
                return true;
        }
    }
    return false;
}

int giveBackObject(dl_phdr_info* info, size_t, void* total) {
    // Only what comes from a file; the kernel's own page of code has no path.
    if (!info->dlpi_name || info->dlpi_name[0] != '/' || hasPatchedCode(*info))
        return 0;
    const auto pageMask = static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE)) - 1;
    for (int i = 0; i < info->dlpi_phnum; ++i) {
        const auto& segment = info->dlpi_phdr[i];
        // A writable segment also holds what the loader wrote into it, even where it is read-only by now.
        if (segment.p_type != PT_LOAD || (segment.p_flags & PF_W) != 0)
            continue;
        const auto begin = (info->dlpi_addr + segment.p_vaddr) & ~pageMask;
        const auto end = (info->dlpi_addr + segment.p_vaddr + segment.p_filesz) & ~pageMask;
        // NOLINTNEXTLINE(performance-no-int-to-ptr): the loader tells addresses as numbers.
        if (end > begin && ::madvise(reinterpret_cast<void*>(begin), end - begin, MADV_DONTNEED) == 0)
            *static_cast<std::size_t*>(total) += end - begin;
    }
    return 0;
}

} // namespace

void LibraryPages::giveBackOnce(MainQueue& mainQueue) {
    static bool done = false;
    if (done)
        return;
    done = true;
    mainQueue.asyncAfter(settled, [] { giveBack(); });
}

std::size_t LibraryPages::giveBack() {
    std::size_t total = 0;
    ::dl_iterate_phdr(&giveBackObject, &total);
    return total;
}

} // namespace zofra
