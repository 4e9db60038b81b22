/* A host in C: it loads the library by name and calls it through slot tables of its own, written
   from docs/contract.md. It sets a sine generator on a source of silence and prints what comes out.

   An object is a pointer to a struct whose first member points to a table of functions; each takes
   the object as its first argument. Reserved slots must exist, and are never called. */

#include <dlfcn.h>
#include <stdbool.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>

static const double Interval_ms = 0.1; /* 10 kHz */
static const int SignalLength = 11;

/* ---- The objects that the host makes ---- */

typedef void Unused(void);

typedef struct Descriptor Descriptor;
typedef struct {
  uint64_t (*QueryInterface)(Descriptor*, const void* iid, void** out);
  uint64_t (*AddRef)(Descriptor*);
  uint64_t (*Release)(Descriptor*);
  int (*GetLength)(Descriptor*);
  void (*SetLength)(Descriptor*, int length);
  void (*GetPeriod)(Descriptor*, double* interval_ms);
  void (*SetPeriod)(Descriptor*, double interval_ms);
  Unused *reserved7, *reserved8, *reserved9;
  void (*SetRange)(Descriptor*, double fullScale);
  Unused *reserved11, *reserved12, *reserved13, *reserved14, *reserved15;
  void (*SetUnits)(Descriptor*, const char* units);
  void (*GetName)(Descriptor*, char* buffer, int size);
} DescriptorSlots;
struct Descriptor {
  const DescriptorSlots* slots;
  int32_t references;
  int length;
  double interval_ms;
};

typedef struct Source Source;
typedef struct {
  uint64_t (*QueryInterface)(Source*, const void* iid, void** out);
  uint64_t (*AddRef)(Source*);
  uint64_t (*Release)(Source*);
  void (*GetDescriptor)(Source*, Descriptor** out);
  int (*TransmitNow)(Source*, float* buffer, int count, int* produced);
  void (*Dispose)(Source*);
  bool (*EndOfSrc)(Source*);
  void (*EnableInPlace)(Source*, bool flag);
} SourceSlots;
struct Source {
  const SourceSlots* slots;
  int32_t references;
  int position;
};

/* ---- The objects that the library makes, as far as this host calls them ---- */

typedef struct Filter Filter;
typedef struct {
  uint64_t (*QueryInterface)(Filter*, const void* iid, void** out);
  uint64_t (*AddRef)(Filter*);
  uint64_t (*Release)(Filter*);
  void (*GetDescriptor)(Filter*, Descriptor** out);
  int (*TransmitNow)(Filter*, float* buffer, int count, int* produced);
  void (*Dispose)(Filter*);
  bool (*EndOfSrc)(Filter*);
  void (*EnableInPlace)(Filter*, bool flag);
  int (*Set_src_list)(Filter*, Source** sources, int count);
  void (*Set_param_list)(Filter*, double* values, int count);
} FilterSlots;
struct Filter {
  const FilterSlots* slots;
};

typedef struct Factory Factory;
typedef struct {
  uint64_t (*QueryInterface)(Factory*, const void* iid, void** out);
  uint64_t (*AddRef)(Factory*);
  uint64_t (*Release)(Factory*);
  void (*SetStr)(Factory*, char* text);
  int (*GetFilter)(Factory*, Filter** out);
} FactorySlots;
struct Factory {
  const FactorySlots* slots;
};

typedef Factory* EntryPoint(Factory** out);

/* ---- The descriptor: what the host knows about a signal ---- */

/* The library asks none of the host's objects for another interface. */
static uint64_t DescriptorQuery(Descriptor* self, const void* iid, void** out) {
  (void)self;
  (void)iid;
  *out = NULL;
  return 0x80004002;
}
static uint64_t DescriptorAddRef(Descriptor* self) { return (uint64_t)++self->references; }
static uint64_t DescriptorRelease(Descriptor* self) {
  const int32_t left = --self->references;
  if (left > 0) {
    return (uint64_t)left;
  }
  free(self);
  return 0;
}
static int GetLength(Descriptor* self) { return self->length; }
static void SetLength(Descriptor* self, int length) { self->length = length; }
static void GetPeriod(Descriptor* self, double* out) { *out = self->interval_ms; }
static void SetPeriod(Descriptor* self, double interval_ms) { self->interval_ms = interval_ms; }
static void SetRange(Descriptor* self, double fullScale) { (void)self, (void)fullScale; }
static void SetUnits(Descriptor* self, const char* units) { (void)self, (void)units; }
/* Filters that read data files look for them beside this path. A sine has none. */
static void GetName(Descriptor* self, char* buffer, int size) {
  (void)self;
  if (size > 0) {
    *buffer = '\0';
  }
}
static const DescriptorSlots descriptorSlots = {.QueryInterface = DescriptorQuery,
                                                .AddRef = DescriptorAddRef,
                                                .Release = DescriptorRelease,
                                                .GetLength = GetLength,
                                                .SetLength = SetLength,
                                                .GetPeriod = GetPeriod,
                                                .SetPeriod = SetPeriod,
                                                .SetRange = SetRange,
                                                .SetUnits = SetUnits,
                                                .GetName = GetName};

/* ---- The source: zeros ---- */

static uint64_t SourceQuery(Source* self, const void* iid, void** out) {
  (void)self;
  (void)iid;
  *out = NULL;
  return 0x80004002;
}
static uint64_t SourceAddRef(Source* self) { return (uint64_t)++self->references; }
static uint64_t SourceRelease(Source* self) {
  const int32_t left = --self->references;
  if (left > 0) {
    return (uint64_t)left;
  }
  free(self);
  return 0;
}
/* A fresh object for each caller, with one reference that becomes the caller's: filters amend the
   descriptors that they are given. */
static void GetDescriptor(Source* self, Descriptor** out) {
  (void)self;
  *out = malloc(sizeof **out);
  if (*out == NULL) {
    abort();
  }
  **out = (Descriptor){&descriptorSlots, 1, SignalLength, Interval_ms};
}
/* Filters also ask for nothing, or for less; both get nothing. */
static int TransmitNow(Source* self, float* buffer, int count, int* produced) {
  const int left = SignalLength - self->position;
  *produced = count < 0 ? 0 : count < left ? count : left;
  for (int i = 0; i < *produced; ++i) {
    buffer[i] = 0.0F;
  }
  self->position += *produced;
  return 1;
}
static void Dispose(Source* self) { (void)self; }
static bool EndOfSrc(Source* self) { return self->position >= SignalLength; }
static void EnableInPlace(Source* self, bool flag) { (void)self, (void)flag; }
static const SourceSlots sourceSlots = {SourceQuery, SourceAddRef, SourceRelease, GetDescriptor,
                                        TransmitNow, Dispose,      EndOfSrc,      EnableInPlace};

/* ---- The host ---- */

int main(int argc, char** argv) {
  void* library = dlopen(argc > 1 ? argv[1] : "libwavefilters.so.1", RTLD_NOW);
  EntryPoint* sineGen = NULL;
  if (library != NULL) {
    /* POSIX gives functions as data pointers; this is the conversion that its rationale shows. */
    *(void**)&sineGen = dlsym(library, "SineGenI");
  }
  if (sineGen == NULL) {
    fprintf(stderr, "example_host: %s\n", dlerror());
    return 1;
  }

  Factory* factory = NULL;
  sineGen(&factory);
  Filter* sine = NULL;
  factory->slots->GetFilter(factory, &sine); /* one reference, ours */
  factory->slots->Release(factory);          /* its filters outlive it */

  double parameters[] = {1000.0, 0.5}; /* Hz, amplitude; the phase keeps its default */
  sine->slots->Set_param_list(sine, parameters, 2);
  Source* source = malloc(sizeof *source);
  if (source == NULL) {
    return 1;
  }
  *source = (Source){&sourceSlots, 1, 0};
  sine->slots->Set_src_list(sine, &source, 1); /* our reference is the filter's now */

  Descriptor* described = NULL;
  sine->slots->GetDescriptor(sine, &described);
  printf("%d samples, one every %g ms\n", described->length, described->interval_ms);
  described->slots->Release(described);

  float block[4];
  while (!sine->slots->EndOfSrc(sine)) {
    int produced = 0;
    sine->slots->TransmitNow(sine, block, 4, &produced);
    for (int i = 0; i < produced; ++i) {
      printf("%.6f\n", (double)block[i]);
    }
  }
  sine->slots->Dispose(sine);
  sine->slots->Release(sine);
  /* Only once no object of the library is left. */
  dlclose(library);
  return 0;
}
