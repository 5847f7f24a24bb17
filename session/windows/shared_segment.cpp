// Contract: a segment of eight bytes, shared by all programs that load the library, that nothing reads or writes.
[[gnu::section("Share.TK"), gnu::shared, gnu::used]] unsigned char tkShared[8] = {0x03, 0x1A};
