/* A host in plain C: loads the library and calls every slot of every factory and filter by its
 * number. What the samples are is tested elsewhere; this shows that the numbers alone suffice.
 */
#include <dlfcn.h>
#include <math.h>
#include <stdio.h>
#include <string.h>

#include "host_objects.h"

enum { SignalLength = 10000, BlockLength = 1000, LargestKernel = 4097 };

static int failures = 0;

static void Check(bool holds, const char* kind, const char* what) {
  if (!holds) {
    ++failures;
    printf("%s: not so: %s\n", kind, what);
  }
}
#define CHECK(holds) Check(holds, kind->entry, #holds)

typedef struct Identifier {
  uint64_t Data1;
  uint16_t Data2, Data3;
  uint8_t Data4[8];
} Identifier;

static const Identifier Unknown = {0, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
static const Identifier WaveFilter = {
    0x3bd1aa82, 0xd4ed, 0x49a1, {0xB4, 0x7A, 0x65, 0x6D, 0x23, 0x66, 0x89, 0xBF}};

/* What stands in slots 15 and 16, and how much a filter delivers of SignalLength samples. */
typedef enum Family { Plain, InPlace, Block, Fir, Track, Resampler } Family;
enum { AnyLength = -1 };

typedef struct Kind {
  const char* entry;
  Family family;
  int delivered;
} Kind;

static const Kind Kinds[] = {
    {"SetTrackI", Plain, 0}, /* there is no track file */
    {"BeamPelI", Track, SignalLength},
    {"BeamDataI", Track, SignalLength},
    {"GlotSynI", Track, SignalLength},
    {"FricSynI", Track, SignalLength},
    {"PulseSynI", Track, SignalLength},
    {"FIRFilterI", Fir, SignalLength},
    {"FIRNotchI", Fir, SignalLength},
    {"ResampleI", Resampler, AnyLength},
    {"SumSourcesI", Block, SignalLength},
    {"EchoCancelI", Block, AnyLength},
    {"SineGenI", InPlace, SignalLength},
    {"SquareGenI", InPlace, SignalLength},
};

/* Slots 0 to 2, which all objects have alike. */
static void CallUnknown(const Kind* kind, void* object, bool isFilter) {
  typedef uint64_t (*QueryInterface)(void*, const Identifier*, void**);
  typedef uint64_t (*Count)(void*);
  const QueryInterface query = (QueryInterface)Slot(object, 0);
  const Count addRef = (Count)Slot(object, 1);
  const Count release = (Count)Slot(object, 2);
  void* out = NULL;
  CHECK(query(object, &Unknown, &out) == 0 && out == object);
  CHECK(addRef(object) == 3);
  CHECK(release(object) == 2);
  CHECK(release(object) == 1);
  const uint64_t code = query(object, &WaveFilter, &out);
  if (isFilter) {
    CHECK(code == 0 && out == object);
    CHECK(release(object) == 1);
  } else {
    CHECK(code == UINT64_C(0x80004002) && out == NULL);
  }
}

static uint64_t Release(void* object) { return ((uint64_t(*)(void*))Slot(object, 2))(object); }

static void Connect(void* filter, HostSource* first, HostSource* second, HostConsole* console,
                    HostStream* stream) {
  double parameters[] = {2.0, 1.0};
  void* sources[2];
  sources[0] = first;
  sources[1] = second;
  ((void (*)(void*, double*, int))Slot(filter, 9))(filter, parameters, 2);
  ((void (*)(void*, void*))Slot(filter, 10))(filter, console);
  ((void (*)(void*, void*))Slot(filter, 11))(filter, stream);
  ((void (*)(void*, void**, int))Slot(filter, 8))(filter, sources, 2);
}

static int PullAll(const Kind* kind, void* filter) {
  typedef int (*TransmitNow)(void*, float*, int, int*);
  typedef bool (*EndOfSrc)(void*);
  float block[BlockLength];
  int total = 0;
  for (int pull = 0; pull < 100 && !((EndOfSrc)Slot(filter, 6))(filter); ++pull) {
    int produced = -1;
    ((TransmitNow)Slot(filter, 4))(filter, block, BlockLength, &produced);
    CHECK(produced >= 0 && produced <= BlockLength);
    total += produced;
  }
  CHECK(((EndOfSrc)Slot(filter, 6))(filter));
  return total;
}

static void CallTrackSlots(const Kind* kind, void* filter) {
  float in[8] = {0};
  const int reserve = ((int (*)(void*))Slot(filter, 15))(filter);
  CHECK(reserve >= 0 && reserve < 8192);
  ((void (*)(void*, float*, int, int))Slot(filter, 16))(filter, in, 4, 0);
}

static void CallResamplerSlots(const Kind* kind, void* filter) {
  static float kernel[LargestKernel];
  float in[8] = {0};
  float out[8] = {0};
  int count = -1;
  int consumed = -1;
  int produced = -1;
  ((void (*)(void*, float*, int*))Slot(filter, 15))(filter, kernel, &count);
  CHECK(count >= 1 && count <= LargestKernel);
  ((void (*)(void*, float*, float*, int, int, int*, int*))Slot(filter, 16))(filter, in, out, 0, 0,
                                                                            &consumed, &produced);
  CHECK(consumed == 0 && produced == 0);
}

/* The slots that a family adds, on a filter that a source is connected to. */
static void CallFamilySlots(const Kind* kind, void* filter) {
  typedef void (*BlockApply)(void*, float*, float*, int);
  float in[8] = {0};
  float out[8] = {0};
  switch (kind->family) {
    case Plain:
      break;
    case InPlace:
      ((void (*)(void*, float*, int))Slot(filter, 15))(filter, in, 4);
      CHECK(in[0] != 0.0F && in[4] == 0.0F);
      break;
    case Block:
      in[3] = 7.0F;
      ((BlockApply)Slot(filter, 15))(filter, in, out, 4);
      CHECK(out[3] == 7.0F && out[4] == 0.0F);
      break;
    case Fir:
      in[2] = 1.0F;
      ((BlockApply)Slot(filter, 15))(filter, in, out, 4);
      CHECK(out[0] != 0.0F && isfinite(out[0]) && out[4] == 0.0F);
      ((void (*)(void*, float*, int, double))Slot(filter, 16))(filter, in, 5, 0.0001);
      CHECK(in[2] != 1.0F && in[0] == in[4] && in[5] == 0.0F);
      break;
    case Track:
      CallTrackSlots(kind, filter);
      break;
    case Resampler:
      CallResamplerSlots(kind, filter);
      break;
  }
}

static void CallFilter(const Kind* kind, void* filter) {
  HostDescriptor descriptor;
  HostSource first;
  HostSource second;
  HostConsole console;
  HostStream stream;
  MakeDescriptor(&descriptor, SignalLength);
  MakeSource(&first, &descriptor, SignalLength);
  MakeSource(&second, &descriptor, SignalLength);
  MakeConsole(&console);
  MakeStream(&stream);

  CallUnknown(kind, filter, true);
  Connect(filter, &first, &second, &console, &stream);
  CHECK(first.object.references == 1);
  CHECK(descriptor.object.references == 1);
  ((void (*)(void*, bool))Slot(filter, 7))(filter, true);
  CHECK(first.inPlace);

  void* described = NULL;
  ((void (*)(void*, void**))Slot(filter, 3))(filter, &described);
  CHECK(described == &descriptor && descriptor.object.references == 2);
  Release(described);

  const int total = PullAll(kind, filter);
  CHECK(kind->delivered == AnyLength || total == kind->delivered);

  ((void (*)(void*))Slot(filter, 12))(filter);
  ((void (*)(void*, void*))Slot(filter, 13))(filter, &descriptor);
  ((void (*)(void*, double))Slot(filter, 14))(filter, 0.1);
  CHECK(descriptor.object.references == 1);
  CallFamilySlots(kind, filter);

  ((void (*)(void*))Slot(filter, 5))(filter);
  CHECK(first.disposed == 1 && first.object.references == 0);
  CHECK(Release(filter) == 0);
  CHECK(second.object.references == 0);
  CHECK(console.object.references == 1);
  CHECK(stream.object.references == 1);
}

/* Slots 3 to 6 of a factory; the filter's life is CallFilter's. */
static void CallFactory(const Kind* kind, void* factory) {
  typedef int (*Getter)(void*, void**);
  typedef int (*NamedGetter)(void*, const char*, void**);
  CallUnknown(kind, factory, false);
  ((void (*)(void*, const char*))Slot(factory, 3))(factory, "ignored");
  void* dialog = factory;
  CHECK(((Getter)Slot(factory, 5))(factory, &dialog) == 0 && dialog == NULL);
  void* nothing = factory;
  CHECK(((NamedGetter)Slot(factory, 6))(factory, "Nothing", &nothing) == 0 && nothing == NULL);

  void* filter = NULL;
  void* named = NULL;
  const int code = ((Getter)Slot(factory, 4))(factory, &filter);
  const int namedCode = ((NamedGetter)Slot(factory, 6))(factory, "WaveFilterC", &named);
  CHECK(code == 1 && filter != NULL);
  CHECK(namedCode == 1 && named != NULL && named != filter);
  CHECK(Release(factory) == 0);
  if (filter != NULL && named != NULL) {
    CHECK(Release(named) == 0);
    CallFilter(kind, filter);
  }
}

int main(int count, char** arguments) {
  if (count != 2) {
    fprintf(stderr, "usage: c_host LIBRARY\n");
    return 2;
  }
  void* const library = dlopen(arguments[1], RTLD_NOW | RTLD_LOCAL);
  if (library == NULL) {
    fprintf(stderr, "c_host: %s\n", dlerror());
    return 1;
  }
  for (size_t i = 0; i < sizeof Kinds / sizeof Kinds[0]; ++i) {
    const Kind* const kind = &Kinds[i];
    void* const symbol = dlsym(library, kind->entry);
    CHECK(symbol != NULL);
    if (symbol != NULL) {
      void* (*entry)(void**);
      void* factory = NULL;
      memcpy(&entry, &symbol, sizeof entry);
      CHECK(entry(&factory) == factory && factory != NULL);
      CallFactory(kind, factory);
    }
  }
  printf("%d failures\n", failures);
  return failures == 0 ? 0 : 1;
}
