#pragma once
// Hands the memory the process has freed back to the system where the C library would keep it:
// glibc holds freed blocks in the arenas of threads that have ended (mpv starts new ones for
// every item). Does nothing where the C library returns memory by itself.
void releaseFreedMemory();
