#include "host_objects.h"

#include <stddef.h>
#include <string.h>

AnyFunction Slot(void* object, int slot) {
  void** const table = *(void***)object;
  AnyFunction function;
  memcpy(&function, &table[slot], sizeof function);
  return function;
}

void PutSlot(void** table, int slot, AnyFunction function) {
  memcpy(&table[slot], &function, sizeof function);
}

static uint64_t QueryInterface(void* self, const void* iid, void** out) {
  (void)self;
  (void)iid;
  *out = NULL;
  return UINT64_C(0x80004002);
}

static uint64_t AddRef(void* self) { return (uint64_t)++((HostObject*)self)->references; }

static uint64_t Release(void* self) { return (uint64_t)--((HostObject*)self)->references; }

static void MakeObject(HostObject* object, void** table) {
  object->table = table;
  object->references = 1;
  PutSlot(table, 0, (AnyFunction)QueryInterface);
  PutSlot(table, 1, (AnyFunction)AddRef);
  PutSlot(table, 2, (AnyFunction)Release);
}

static int GetLength(void* self) { return ((HostDescriptor*)self)->length; }

static void SetLength(void* self, int length) { ((HostDescriptor*)self)->length = length; }

static void GetPeriod(void* self, double* interval_ms) {
  *interval_ms = ((HostDescriptor*)self)->interval_ms;
}

static void SetPeriod(void* self, double interval_ms) {
  ((HostDescriptor*)self)->interval_ms = interval_ms;
}

static void SetRange(void* self, double fullScale) {
  (void)self;
  (void)fullScale;
}

static void SetUnits(void* self, const char* units) {
  (void)self;
  (void)units;
}

static void GetName(void* self, char* buffer, int size) {
  (void)self;
  memset(buffer, 0, (size_t)size);
  strncpy(buffer, "no-such-folder/signal.wav", (size_t)size - 1);
}

void MakeDescriptor(HostDescriptor* descriptor, int length) {
  memset(descriptor, 0, sizeof *descriptor);
  MakeObject(&descriptor->object, descriptor->table);
  descriptor->length = length;
  descriptor->interval_ms = 0.1;
  PutSlot(descriptor->table, 3, (AnyFunction)GetLength);
  PutSlot(descriptor->table, 4, (AnyFunction)SetLength);
  PutSlot(descriptor->table, 5, (AnyFunction)GetPeriod);
  PutSlot(descriptor->table, 6, (AnyFunction)SetPeriod);
  PutSlot(descriptor->table, 10, (AnyFunction)SetRange);
  PutSlot(descriptor->table, 16, (AnyFunction)SetUnits);
  PutSlot(descriptor->table, 17, (AnyFunction)GetName);
}

static void GetDescriptor(void* self, void** out) {
  HostDescriptor* const descriptor = ((HostSource*)self)->descriptor;
  ++descriptor->object.references;
  *out = descriptor;
}

static int TransmitNow(void* self, float* buffer, int count, int* produced) {
  HostSource* const source = self;
  *produced = 0;
  while (*produced < count && source->position < source->length) {
    buffer[(*produced)++] = (float)++source->position;
  }
  return 0;
}

static void Dispose(void* self) { ++((HostSource*)self)->disposed; }

static bool EndOfSrc(void* self) {
  const HostSource* const source = self;
  return source->position == source->length;
}

static void EnableInPlace(void* self, bool flag) { ((HostSource*)self)->inPlace = flag; }

void MakeSource(HostSource* source, HostDescriptor* descriptor, int length) {
  memset(source, 0, sizeof *source);
  MakeObject(&source->object, source->table);
  source->descriptor = descriptor;
  source->length = length;
  PutSlot(source->table, 3, (AnyFunction)GetDescriptor);
  PutSlot(source->table, 4, (AnyFunction)TransmitNow);
  PutSlot(source->table, 5, (AnyFunction)Dispose);
  PutSlot(source->table, 6, (AnyFunction)EndOfSrc);
  PutSlot(source->table, 7, (AnyFunction)EnableInPlace);
}

static void PutStr(void* self, const char* text) {
  (void)self;
  (void)text;
}

static void NewLine(void* self) { ++((HostConsole*)self)->lines; }

static void PutNum(void* self, int width, int precision, double value) {
  (void)self;
  (void)width;
  (void)precision;
  (void)value;
}

static void GetTime(void* self, double* seconds) { *seconds = ((HostConsole*)self)->time_s += 1.0; }

void MakeConsole(HostConsole* console) {
  memset(console, 0, sizeof *console);
  MakeObject(&console->object, console->table);
  PutSlot(console->table, 3, (AnyFunction)PutStr);
  PutSlot(console->table, 5, (AnyFunction)NewLine);
  PutSlot(console->table, 7, (AnyFunction)PutNum);
  PutSlot(console->table, 8, (AnyFunction)GetTime);
}

static bool OpenNothing(void* self, void* name) {
  (void)name;
  ++((HostStream*)self)->opened;
  return false;
}

static bool GetNothing(void* self, void* value) {
  (void)self;
  (void)value;
  return false;
}

static bool GetLine(void* self) {
  (void)self;
  return false;
}

static void Close(void* self) { (void)self; }

static int BytesRemain(void* self) {
  (void)self;
  return 0;
}

static void SkipBytes(void* self, int count) {
  (void)self;
  (void)count;
}

static int ReadBytes(void* self, char* buffer, int count) {
  (void)self;
  (void)buffer;
  (void)count;
  return 0;
}

void MakeStream(HostStream* stream) {
  memset(stream, 0, sizeof *stream);
  MakeObject(&stream->object, stream->table);
  PutSlot(stream->table, 3, (AnyFunction)OpenNothing);
  PutSlot(stream->table, 4, (AnyFunction)GetNothing);
  PutSlot(stream->table, 5, (AnyFunction)GetNothing);
  PutSlot(stream->table, 6, (AnyFunction)GetLine);
  PutSlot(stream->table, 7, (AnyFunction)Close);
  PutSlot(stream->table, 8, (AnyFunction)OpenNothing);
  PutSlot(stream->table, 9, (AnyFunction)OpenNothing);
  PutSlot(stream->table, 10, (AnyFunction)BytesRemain);
  PutSlot(stream->table, 11, (AnyFunction)SkipBytes);
  PutSlot(stream->table, 12, (AnyFunction)ReadBytes);
}
