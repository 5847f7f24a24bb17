// A shared object that is no in-process server.
extern "C" __attribute__((visibility("default"))) int NothingHere() {
    return 1;
}
