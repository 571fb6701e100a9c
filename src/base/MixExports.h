#pragma once

#include <cstdint>

// Debug switches of the procedure. All start at zero and nothing in the
// procedure sets them; only the host (or a test) can.
extern "C" {
extern bool display_settings;
extern bool aggreg_random;
extern bool display_component;
extern bool display_output;
extern bool write_text_data;
extern bool display_metadata;

// The parser's numeric and character blocks, as the host published them.
extern std::intptr_t CmnMix;
extern std::intptr_t CmaMix;

// Publishes the parser's two blocks; returns the address of CmaMix.
std::intptr_t* exposemix_(std::intptr_t first, std::intptr_t second);
}
