// What some faults do by means of the platform: platform_posix.cpp, platform_windows.cpp.
#pragma once

extern const int kSomeSignal;
void block_signal();
void crash();
