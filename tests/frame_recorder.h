// Stand-ins for the kernels: each writes down that it was entered, and with what.
#pragma once

struct RecordedCall {
  const char* kernel;  // null until a kernel was entered
  const void* src;
  void* dst;
  int flag;
  void* buffer;  // null for a kernel without that argument
};

struct RecordedDispatcher {
  const char* name;
  void (*function)();
  bool takes_buffer;
  int first, last;  // sizes
};

extern RecordedCall recorded_call;
extern const RecordedDispatcher recorded_dispatchers[];
extern const int recorded_dispatcher_count;

// What every recorder returns: no status of the library, to be seen unchanged.
constexpr int kRecordedStatus = 12345;
