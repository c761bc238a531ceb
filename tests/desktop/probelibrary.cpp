// A library that says it was loaded: its constructor creates the file LUMO_PROBE_MARKER names.
// Tests hand it to the player hidden in an address, to show that the player never loads it.
#include <cstdio>
#include <cstdlib>

namespace {

[[gnu::constructor]] void sayLoaded()
{
    if (const char *marker = std::getenv("LUMO_PROBE_MARKER")) {
        if (std::FILE *file = std::fopen(marker, "w"))
            std::fclose(file);
    }
}

} // namespace
