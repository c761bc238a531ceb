#pragma once
// Hands the memory the process has freed back to the system where the C library would keep it.
// glibc keeps freed blocks in per-thread arenas, and mpv starts new threads for every item: a
// live channel reconnected all evening would otherwise spread its blocks over ever more arenas.
// Linking this in also fixes glibc's thresholds before main, so that large blocks (over 128 KB)
// get pages of their own, returned to the system as soon as they are freed.
// Does nothing where the C library returns memory by itself.
void releaseFreedMemory();
