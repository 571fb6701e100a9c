#pragma once

// The base of the output handles. A handle refers to a body shared by all
// its copies and counted by them; the body goes with the last handle that
// refers to it. Assignment rebinds a handle to another body, which is how
// one category variable walks along a row. The output the bodies wrote
// stays in the output document: handles can go in any order.
class BpHandle {
 public:
  class Body {
   public:
    Body() = default;
    virtual ~Body() = default;
    Body(const Body&) = delete;
    Body& operator=(const Body&) = delete;

   private:
    friend class BpHandle;
    long fRefCount = 0;
  };

  BpHandle() = default;
  // Binds to `pBody`, which the handles then share and delete.
  explicit BpHandle(Body* pBody);
  BpHandle(const BpHandle& other);
  BpHandle& operator=(const BpHandle& other);
  virtual ~BpHandle();

  bool IsBound() const { return fpBody != nullptr; }
  // How many handles share the body; 0 when unbound.
  long GetRefCount() const { return fpBody ? fpBody->fRefCount : 0; }
  Body* GetBody() const { return fpBody; }

 private:
  void Release();

  Body* fpBody = nullptr;
};
