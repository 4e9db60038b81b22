/* The objects that a host written in C gives to the library: structs whose first member points to a
 * table of plain pointers, filled in slot by slot. Nothing here comes from the library.
 */
#ifndef WAVEFILTERS_TESTS_C_HOST_HOST_OBJECTS_H
#define WAVEFILTERS_TESTS_C_HOST_HOST_OBJECTS_H

#include <stdbool.h>
#include <stdint.h>

typedef void (*AnyFunction)(void);

/* A slot of any object, to be cast to its function's type. */
AnyFunction Slot(void* object, int slot);

/* A table holds object pointers as a C++ vtable does; this is the one place that turns a function
 * into one. */
void PutSlot(void** table, int slot, AnyFunction function);

typedef struct HostObject {
  void** table;
  int references;
} HostObject;

typedef struct HostDescriptor {
  HostObject object;
  void* table[18];
  int length;
  double interval_ms;
} HostDescriptor;

typedef struct HostSource {
  HostObject object;
  void* table[8];
  HostDescriptor* descriptor;
  int length;
  int position;
  bool inPlace;
  int disposed;
} HostSource;

typedef struct HostConsole {
  HostObject object;
  void* table[9];
  double time_s;
  int lines;
} HostConsole;

typedef struct HostStream {
  HostObject object;
  void* table[13];
  int opened;
} HostStream;

/* Each is made with one reference. The samples of a source are 1, 2, 3 ... */
void MakeDescriptor(HostDescriptor* descriptor, int length);
void MakeSource(HostSource* source, HostDescriptor* descriptor, int length);
void MakeConsole(HostConsole* console);
/* A reader that finds none of its files. */
void MakeStream(HostStream* stream);

#endif
