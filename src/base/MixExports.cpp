#include "base/MixExports.h"

extern "C" {
bool display_settings = false;
bool aggreg_random = false;
bool display_component = false;
bool display_output = false;
bool write_text_data = false;
bool display_metadata = false;

std::intptr_t CmnMix = 0;
std::intptr_t CmaMix = 0;

std::intptr_t* exposemix_(std::intptr_t first, std::intptr_t second) {
  CmnMix = first;
  CmaMix = second;
  return &CmaMix;
}
}
