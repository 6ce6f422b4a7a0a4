// A shared object like any other.
extern "C" __attribute__((visibility("default"))) int SomethingElse() {
    return 0;
}
