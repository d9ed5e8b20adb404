// The `main` of a program that holds two versions of its code: asks the processor, and goes on with the better one.
// Nothing of the other may run, so initialisers stand aside until it is known whose. All names are given by
// two_versions.cmake and the linker, which marks the ends of a section that is there.
using Initialiser = void (*)();
using Main = int (*)(int, char**);

extern "C" {
int mainForV2(int count, char** words);
int mainForV3(int count, char** words);
[[gnu::weak, gnu::visibility("hidden")]] extern Initialiser __start_initialisersForV2[];
[[gnu::weak, gnu::visibility("hidden")]] extern Initialiser __stop_initialisersForV2[];
[[gnu::weak, gnu::visibility("hidden")]] extern Initialiser __start_initialisersForV3[];
[[gnu::weak, gnu::visibility("hidden")]] extern Initialiser __stop_initialisersForV3[];
}

static int run(const Initialiser* next, const Initialiser* end, Main version, int count, char** words) {
    for (; next != end; ++next) {
        (*next)();
    }
    return version(count, words);
}

int main(int count, char** words) {
    return __builtin_cpu_supports("x86-64-v3")
               ? run(__start_initialisersForV3, __stop_initialisersForV3, mainForV3, count, words)
               : run(__start_initialisersForV2, __stop_initialisersForV2, mainForV2, count, words);
}
