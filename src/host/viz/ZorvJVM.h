#pragma once

// The process-wide virtual machine that hosts the chart editor. It is
// started on first need and attached to each thread that calls into it.
class ZorvJVM {
 public:
  static ZorvJVM* GetInstance();
  ZorvJVM(const ZorvJVM&) = delete;
  ZorvJVM& operator=(const ZorvJVM&) = delete;

  bool IsStarted() const { return fbStarted; }
  // Starts the machine; true when it runs afterwards.
  bool StartJVM();
  // Attaches the calling thread and gives its environment in *env.
  bool AttachCurrentThread(void** env);
  // The environment of the calling thread, which must be attached.
  void* GetEnv() const;

 private:
  ZorvJVM() = default;

  bool fbStarted = false;
};
