#include "host/output/BpHandle.h"

BpHandle::BpHandle(Body* pBody) : fpBody(pBody) {
  if (fpBody) ++fpBody->fRefCount;
}

BpHandle::BpHandle(const BpHandle& other) : fpBody(other.fpBody) {
  if (fpBody) ++fpBody->fRefCount;
}

BpHandle& BpHandle::operator=(const BpHandle& other) {
  if (other.fpBody) ++other.fpBody->fRefCount;
  Release();
  fpBody = other.fpBody;
  return *this;
}

BpHandle::~BpHandle() { Release(); }

void BpHandle::Release() {
  if (fpBody && --fpBody->fRefCount == 0) delete fpBody;
  fpBody = nullptr;
}
