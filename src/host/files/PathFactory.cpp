#include "host/files/PathFactory.h"

#include "host/data/ZORV_Session.h"

namespace {

std::string AsDirectory(const std::string& dir) {
  if (dir.empty()) return "./";
  return dir.back() == '/' ? dir : dir + '/';
}

// The instances only differ by kind; the constructor is protected.
class SessionPathFactory : public PathFactory {
 public:
  explicit SessionPathFactory(int kind) : PathFactory(kind) {}
};

}  // namespace

PathFactory* PathFactory::getPathInstance() { return getPathInstance(PROCEDURE); }

PathFactory* PathFactory::getPathInstance(int kind) {
  static SessionPathFactory procedure(PROCEDURE);
  static SessionPathFactory presentation(PRESENTATION);
  return kind == PRESENTATION ? &presentation : &procedure;
}

std::string PathFactory::GetWritablePath() const { return AsDirectory(ZORV_Session::Current().GetWritableDir()); }

std::string PathFactory::GetResourcePath() const { return AsDirectory(ZORV_Session::Current().GetResourceDir()); }

std::string PathFactory::GetStringTablePath() const { return GetResourcePath() + "strings/"; }
