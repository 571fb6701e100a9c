#include "host/data/ObsVecMap.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "host/data/ZORV_DataSource.h"

namespace {

unsigned long WordsOf(short width) { return width <= 8 ? 1ul : static_cast<unsigned long>((width + 7) / 8); }

}  // namespace

std::vector<short> ObsVecMap::MakeKeySpec(const ZORV_DataSource& dataSource, const std::vector<int>& hostIndices) {
  std::vector<short> spec;
  spec.reserve(hostIndices.size());
  for (int index : hostIndices) {
    const ZORV_Variable* variable = index >= 0 ? dataSource.GetVariable(index) : nullptr;
    int type = variable ? variable->GetType() : 0;
    spec.push_back(static_cast<short>(type > 0 ? type : 0));
  }
  return spec;
}

ObsVecMap::ObsVecMap(const std::vector<short>& keySpec, unsigned long extra)
    : fvKeySpec(keySpec), fKeyWords(0), fExtraWords(extra) {
  for (short width : fvKeySpec) fKeyWords += WordsOf(width);
  if (fKeyWords == 0) fKeyWords = 1;
}

OBS* ObsVecMap::operator[](unsigned long index) { return index < fvCells.size() ? fvCells[index].get() : nullptr; }

const OBS* ObsVecMap::operator[](unsigned long index) const {
  return index < fvCells.size() ? fvCells[index].get() : nullptr;
}

std::string ObsVecMap::KeyBytes(const OBS* key) const {
  return std::string(reinterpret_cast<const char*>(key), fKeyWords * sizeof(OBS));
}

OBS* ObsVecMap::Contains(const OBS* key) const {
  if (key == nullptr) return nullptr;
  auto it = fIndex.find(KeyBytes(key));
  return it == fIndex.end() ? nullptr : fvCells[it->second].get();
}

OBS* ObsVecMap::Insert(const OBS* key) {
  if (key == nullptr) return nullptr;
  std::string bytes = KeyBytes(key);
  auto it = fIndex.find(bytes);
  if (it != fIndex.end()) return fvCells[it->second].get();
  std::unique_ptr<OBS[]> cell(new OBS[CellSize()]);
  std::memcpy(cell.get(), key, fKeyWords * sizeof(OBS));
  for (unsigned long i = fKeyWords; i < CellSize(); ++i) cell[i].fNum = 0.0;
  fvCells.push_back(std::move(cell));
  fIndex.emplace(std::move(bytes), fvCells.size() - 1);
  return fvCells.back().get();
}

int ObsVecMap::CompareKeys(const OBS* a, const OBS* b) const {
  unsigned long word = 0;
  for (short width : fvKeySpec) {
    if (width <= 0) {
      double x = a[word].fNum;
      double y = b[word].fNum;
      bool xNaN = std::isnan(x);
      bool yNaN = std::isnan(y);
      // Not-a-number values go last, in the order of their bytes.
      if (xNaN != yNaN) return xNaN ? 1 : -1;
      if (xNaN) {
        int c = std::memcmp(&a[word], &b[word], sizeof(OBS));
        if (c != 0) return c;
      } else if (x < y) {
        return -1;
      } else if (y < x) {
        return 1;
      }
    } else {
      int c = std::memcmp(&a[word], &b[word], static_cast<std::size_t>(width));
      if (c != 0) return c;
    }
    word += WordsOf(width);
  }
  return 0;
}

void ObsVecMap::Sort(std::vector<OBS*>& out) const {
  out.clear();
  out.reserve(fvCells.size());
  for (const auto& cell : fvCells) out.push_back(cell.get());
  std::sort(out.begin(), out.end(), [this](const OBS* a, const OBS* b) { return CompareKeys(a, b) < 0; });
}
