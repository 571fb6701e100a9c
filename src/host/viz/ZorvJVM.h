#pragma once

// The process-wide start of the chart platform. In a host whose chart
// editor runs in a virtual machine this starts the machine and attaches
// threads to it; here the editor is native code, and starting the platform
// means finding its resources: the template folder must be there and
// readable, or the platform does not start (charts that need the editor,
// such as an embedded histogram, then go without it). A thread attaches
// before it calls the editor and is given its environment, the token the
// editor's calls are made in; the platform serves one thread at a time.
class ZorvJVM {
 public:
  static ZorvJVM* GetInstance();
  ZorvJVM(const ZorvJVM&) = delete;
  ZorvJVM& operator=(const ZorvJVM&) = delete;

  bool IsStarted() const { return fbStarted; }
  // Starts the platform; true when it runs afterwards. Starting again once
  // it runs changes nothing.
  bool StartJVM();
  // Attaches the calling thread and gives its environment in *env; false,
  // and null, when the platform is not started.
  bool AttachCurrentThread(void** env);
  // The environment of the calling thread; null when it is not attached.
  void* GetEnv() const;
  // Forgets the start and every attachment, for tests that start again.
  void Reset();

 private:
  ZorvJVM() = default;

  bool fbStarted = false;
  unsigned long fGeneration = 1;  // attachments of an earlier start are void
};
