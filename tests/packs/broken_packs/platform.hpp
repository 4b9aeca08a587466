// What some faults do by means of the platform: platform_posix.cpp, platform_windows.cpp.
#pragma once

extern const int kSomeSignal;
extern const char* const kSomeLocale;  // Other than the one that programs begin with.
void block_signal();
void crash();
