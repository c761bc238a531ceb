#pragma once
// The memory this process holds in RAM now, in megabytes, as the kernel counts it; NaN where it
// cannot be read.
double residentMegabytes();
