#include "app/AppMixedCommand.h"

int AppMixedCommand::CountRandomTerms() const {
  int count = 0;
  for (const RandomBlockData& block : fvRandomBlocks) count += static_cast<int>(block.fvTerms.size());
  return count;
}
