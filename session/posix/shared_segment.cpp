// Contract: a writable segment of eight bytes that nothing reads or writes; programs on the other system share it.
namespace {

[[gnu::section("Share.TK"), gnu::used]] unsigned char shared[8] = {0x03, 0x1A};

}  // namespace
