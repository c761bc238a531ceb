#pragma once
// Asks the kernel to back large, fresh memory with huge pages: one fault and one clearing per
// 2 MB instead of 512, which is most of what a huge list's new memory costs.
#include <QtGlobal>

// Applies to the whole 2 MB stretches inside the bytes from data; pages already touched keep
// their size. Nothing happens where the kernel does not offer huge pages.
void adviseHugePages(const void *data, qsizetype bytes);
