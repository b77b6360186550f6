// Loaded before everything else into a program: counts the calls of operator new on the main thread from the program's
// main on, and fails one of them, or all from that one on. What static objects take before main is left alone: nobody
// could take an exception there.
//
//   QEL_OOM_FAIL    the number of the call to fail, from 1; 0 or nothing for none
//   QEL_OOM_MODE    "once" or "for good"
//   QEL_OOM_COUNT   a file that the number of calls is written to at the end
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

#include <dlfcn.h>

namespace {

using Main = int (*)(int, char**, char**);

Main programMain = nullptr;
thread_local bool isCounting = false;
unsigned long calls = 0;
unsigned long failing = 0;
bool forGood = false;

void* TryAllocate(std::size_t size, std::size_t alignment) noexcept {
    if (isCounting) {
        ++calls;
        if (failing != 0 && (calls == failing || (forGood && calls > failing))) return nullptr;
    }
    std::size_t const wanted = (size / alignment + 1) * alignment;
    return alignment <= alignof(std::max_align_t) ? std::malloc(size != 0 ? size : 1)
                                                  : std::aligned_alloc(alignment, wanted);
}

void* Allocate(std::size_t size, std::size_t alignment) {
    if (void* const memory = TryAllocate(size, alignment)) return memory;
    throw std::bad_alloc();
}

int CountedMain(int argc, char** argv, char** environment) {
    if (char const* const number = std::getenv("QEL_OOM_FAIL")) failing = std::strtoul(number, nullptr, 10);
    if (char const* const mode = std::getenv("QEL_OOM_MODE")) forGood = std::strcmp(mode, "for good") == 0;
    isCounting = true;
    int const status = programMain(argc, argv, environment);
    isCounting = false;
    if (char const* const path = std::getenv("QEL_OOM_COUNT")) {
        if (std::FILE* const file = std::fopen(path, "w")) {
            std::fprintf(file, "%lu\n", calls);
            std::fclose(file);
        }
    }
    return status;
}

constexpr std::size_t Usual = alignof(std::max_align_t);

}  // namespace

#define QEL_EXPORTED __attribute__((visibility("default")))

extern "C" QEL_EXPORTED int __libc_start_main(Main main, int argc, char** argv, void (*init)(), void (*fini)(),
                                              void (*rtldFini)(), void* stackEnd);

int __libc_start_main(Main main, int argc, char** argv, void (*init)(), void (*fini)(), void (*rtldFini)(),
                      void* stackEnd) {
    programMain = main;
    auto const start = reinterpret_cast<decltype(&__libc_start_main)>(dlsym(RTLD_NEXT, "__libc_start_main"));
    return start(CountedMain, argc, argv, init, fini, rtldFini, stackEnd);
}

QEL_EXPORTED void* operator new(std::size_t size) { return Allocate(size, Usual); }
QEL_EXPORTED void* operator new[](std::size_t size) { return Allocate(size, Usual); }
QEL_EXPORTED void* operator new(std::size_t size, std::nothrow_t const&) noexcept { return TryAllocate(size, Usual); }
QEL_EXPORTED void* operator new[](std::size_t size, std::nothrow_t const&) noexcept { return TryAllocate(size, Usual); }
QEL_EXPORTED void* operator new(std::size_t size, std::align_val_t to) {
    return Allocate(size, static_cast<std::size_t>(to));
}
QEL_EXPORTED void* operator new[](std::size_t size, std::align_val_t to) {
    return Allocate(size, static_cast<std::size_t>(to));
}
QEL_EXPORTED void* operator new(std::size_t size, std::align_val_t to, std::nothrow_t const&) noexcept {
    return TryAllocate(size, static_cast<std::size_t>(to));
}
QEL_EXPORTED void operator delete(void* memory) noexcept { std::free(memory); }
QEL_EXPORTED void operator delete[](void* memory) noexcept { std::free(memory); }
QEL_EXPORTED void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
QEL_EXPORTED void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }
QEL_EXPORTED void operator delete(void* memory, std::align_val_t) noexcept { std::free(memory); }
QEL_EXPORTED void operator delete[](void* memory, std::align_val_t) noexcept { std::free(memory); }
QEL_EXPORTED void operator delete(void* memory, std::size_t, std::align_val_t) noexcept { std::free(memory); }
QEL_EXPORTED void operator delete[](void* memory, std::size_t, std::align_val_t) noexcept { std::free(memory); }
