// The fault of one pack: see tiny_pack.cpp, which is compiled once for all of them.
extern const char tiny_pack_fault[];
const char tiny_pack_fault[] = TINY_PACK_FAULT;
