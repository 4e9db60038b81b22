/* A filter library that is not ours: plain C behind the binary contract, without a word of the
 * product's. Its filters pass their source through, and the first parameter tells how they do it:
 *
 *   1  at most 7 samples at a time
 *   2  claiming 1000 samples more than asked for
 *   3  claiming -5 samples at the first pull
 *   4  delivering nothing, and never ending
 *   5  handing out no descriptor
 *   6  announcing an interval of 0
 *   7  handing out a descriptor of its own: 10 samples, 0.25 ms apart
 *   8  announcing a full scale of 4, in mm
 *   9  announcing a full scale of 0
 *
 * SetTrack announces 5000 samples, 0.5 ms apart, and never ends. Every call (of TransmitNow the
 * first 100) is appended as a line to the file that STRANGE_LOG names. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "support/slots.h"

typedef struct Filter {
  const FilterSlots* slots;
  const char* kind;
  uint64_t count;
  void* source;
  void* console;
  int pulls;
  int manner;
} Filter;

typedef struct Factory {
  const FactorySlots* slots;
  const char* kind;
  uint64_t count;
} Factory;

typedef struct Descriptor {
  const DescriptorSlots* slots;
  uint64_t count;
} Descriptor;

static void Note(const char* kind, const char* call, const char* more) {
  const char* path = getenv("STRANGE_LOG");
  FILE* log = path == NULL ? NULL : fopen(path, "a");
  if (log != NULL) {
    fprintf(log, "%s.%s%s\n", kind, call, more);
    fclose(log);
  }
}

enum Manner {
  ShortDeliveries = 1,
  ClaimTooMany,
  ClaimFewerThanNone,
  Stalled,
  NoDescriptor,
  NoInterval,
  DescriptorOfItsOwn,
  ScaleInMillimetres,
  NoScale
};

static int NeverEnds(const Filter* me) { return strcmp(me->kind, "SetTrack") == 0; }

static const SourceSlots* SlotsOf(void* source) { return *(const SourceSlots**)source; }

/* A descriptor of its own */

static uint64_t NoInterface(void* self, const Guid* iid, void** out) {
  (void)self;
  (void)iid;
  *out = NULL;
  return NO_INTERFACE_CODE;
}
static uint64_t DescriptorAddRef(void* self) { return ++((Descriptor*)self)->count; }
static uint64_t DescriptorRelease(void* self) {
  const uint64_t left = --((Descriptor*)self)->count;
  if (left == 0) {
    free(self);
  }
  return left;
}
static int TenSamples(void* self) {
  (void)self;
  return 10;
}
static void QuarterMillisecond(void* self, double* interval_ms) {
  (void)self;
  *interval_ms = 0.25;
}

static const DescriptorSlots OwnDescriptor = {.QueryInterface = NoInterface,
                                              .AddRef = DescriptorAddRef,
                                              .Release = DescriptorRelease,
                                              .GetLength = TenSamples,
                                              .GetPeriod = QuarterMillisecond};

/* Filters */

static uint64_t AddRef(void* self) { return ++((Filter*)self)->count; }

static void DropSource(Filter* me) {
  if (me->source != NULL) {
    SlotsOf(me->source)->Dispose(me->source);
    SlotsOf(me->source)->Release(me->source);
    me->source = NULL;
  }
}

static uint64_t Release(void* self) {
  Filter* me = self;
  const uint64_t left = --me->count;
  if (left == 0) {
    Note(me->kind, "last Release", "");
    DropSource(me);
    if (me->console != NULL) {
      SlotsOf(me->console)->Release(me->console);
    }
    free(me);
  }
  return left;
}

static void GetDescriptor(void* self, void** out) {
  Filter* me = self;
  Note(me->kind, "GetDescriptor", "");
  if (me->manner == NoDescriptor) {
    *out = NULL;
    return;
  }
  if (me->manner == DescriptorOfItsOwn) {
    Descriptor* own = calloc(1, sizeof *own);
    own->slots = &OwnDescriptor;
    own->count = 1;
    *out = own;
    return;
  }
  SlotsOf(me->source)->GetDescriptor(me->source, out);
  const DescriptorSlots* amended = *(const DescriptorSlots**)*out;
  if (NeverEnds(me)) {
    amended->SetPeriod(*out, 0.5);
    amended->SetLength(*out, 5000);
  } else if (me->manner == NoInterval) {
    amended->SetPeriod(*out, 0.0);
  } else if (me->manner == ScaleInMillimetres) {
    amended->SetRange(*out, 4.0);
    amended->SetUnits(*out, "mm");
  } else if (me->manner == NoScale) {
    amended->SetRange(*out, 0.0);
  }
}

static int TransmitNow(void* self, float* buffer, int count, int* produced) {
  Filter* me = self;
  char more[64];
  snprintf(more, sizeof more, " %d", count);
  if (++me->pulls <= 100) {
    Note(me->kind, "TransmitNow", more);
  }
  *produced = 0;
  if (me->manner == Stalled) {
    return 0;
  }
  if (NeverEnds(me)) {
    for (int i = 0; i < count; ++i) {
      buffer[i] = 0.25f;
    }
    *produced = count;
    return 0;
  }
  if (me->manner == ClaimFewerThanNone && me->pulls == 1) {
    *produced = -5;
    return 0;
  }
  if (me->manner == ShortDeliveries && count > 7) {
    count = 7;
  }
  SlotsOf(me->source)->TransmitNow(me->source, buffer, count, produced);
  if (me->manner == ClaimTooMany && *produced == count) {
    *produced += 1000;
  }
  return 0;
}

static void Dispose(void* self) {
  Note(((Filter*)self)->kind, "Dispose", "");
  DropSource(self);
}

static bool EndOfSrc(void* self) {
  Filter* me = self;
  if (me->manner == Stalled || NeverEnds(me)) {
    return false;
  }
  return me->source == NULL || SlotsOf(me->source)->EndOfSrc(me->source);
}

static void EnableInPlace(void* self, bool flag) {
  Note(((Filter*)self)->kind, "EnableInPlace", flag ? " 1" : " 0");
}

static int Set_src_list(void* self, void** sources, int count) {
  Filter* me = self;
  void* descriptor = NULL;
  double interval_ms = 0.0;
  char name[512];
  char more[700];
  me->source = sources[0];
  SlotsOf(me->source)->GetDescriptor(me->source, &descriptor);
  const DescriptorSlots* slots = *(const DescriptorSlots**)descriptor;
  slots->GetPeriod(descriptor, &interval_ms);
  slots->GetName(descriptor, name, sizeof name);
  const char* slash = strrchr(name, '/');
  snprintf(more, sizeof more, " %d: %d samples, %g ms, %s", count, slots->GetLength(descriptor),
           interval_ms, slash == NULL ? name : slash + 1);
  slots->Release(descriptor);
  Note(me->kind, "Set_src_list", more);
  return 0;
}

static void Set_param_list(void* self, double* values, int count) {
  char more[256] = "";
  ((Filter*)self)->manner = count < 1 ? 0 : (int)values[0];
  for (int i = 0; i < count; ++i) {
    const size_t at = strlen(more);
    snprintf(more + at, sizeof more - at, " %g", values[i]);
  }
  Note(((Filter*)self)->kind, "Set_param_list", more);
}

static void Set_console_out(void* self, void* console) {
  Filter* me = self;
  me->console = console;
  SlotsOf(console)->AddRef(console);
  Note(me->kind, "Set_console_out", "");
}

static void Set_num_stream(void* self, void* stream) {
  (void)stream;
  Note(((Filter*)self)->kind, "Set_num_stream", "");
}

static int SrcSet(void* self) {
  Note(((Filter*)self)->kind, "SrcSet", "");
  return 0;
}

static void InitFrom(void* self, void* descriptor) {
  (void)descriptor;
  Note(((Filter*)self)->kind, "Init", " descriptor");
}

static void Init(void* self, double interval_ms) {
  (void)interval_ms;
  Note(((Filter*)self)->kind, "Init", " interval");
}

static const FilterSlots FilterTable = {.QueryInterface = NoInterface,
                                        .AddRef = AddRef,
                                        .Release = Release,
                                        .GetDescriptor = GetDescriptor,
                                        .TransmitNow = TransmitNow,
                                        .Dispose = Dispose,
                                        .EndOfSrc = EndOfSrc,
                                        .EnableInPlace = EnableInPlace,
                                        .Set_src_list = Set_src_list,
                                        .Set_param_list = Set_param_list,
                                        .Set_console_out = Set_console_out,
                                        .Set_num_stream = Set_num_stream,
                                        .SrcSet = SrcSet,
                                        .InitFrom = InitFrom,
                                        .Init = Init};

/* Factories */

static uint64_t FactoryAddRef(void* self) { return ++((Factory*)self)->count; }
static uint64_t FactoryRelease(void* self) {
  const uint64_t left = --((Factory*)self)->count;
  if (left == 0) {
    Note(((Factory*)self)->kind, "factory released", "");
    free(self);
  }
  return left;
}
static int GetFilter(void* self, void** out) {
  Filter* filter = calloc(1, sizeof *filter);
  filter->slots = &FilterTable;
  filter->kind = ((Factory*)self)->kind;
  filter->count = 1;
  *out = filter;
  Note(filter->kind, "GetFilter", "");
  return 1;
}

static const FactorySlots FactoryTable = {.QueryInterface = NoInterface,
                                          .AddRef = FactoryAddRef,
                                          .Release = FactoryRelease,
                                          .GetFilter = GetFilter};

static void* NewFactory(const char* kind, void** out) {
  Factory* factory = calloc(1, sizeof *factory);
  factory->slots = &FactoryTable;
  factory->kind = kind;
  factory->count = 1;
  *out = factory;
  return factory;
}

#define ENTRY(name, kind) \
  void* name(void** out); \
  void* name(void** out) { return NewFactory(kind, out); }

ENTRY(SetTrackI, "SetTrack")
ENTRY(BeamPelI, "BeamPel")
ENTRY(BeamDataI, "BeamData")
ENTRY(GlotSynI, "GlotSyn")
ENTRY(FricSynI, "FricSyn")
ENTRY(PulseSynI, "PulseSyn")
ENTRY(FIRFilterI, "FIRFilter")
ENTRY(FIRNotchI, "FIRNotch")
ENTRY(ResampleI, "ResampleBlackman")
ENTRY(SumSourcesI, "SumSources")
ENTRY(EchoCancelI, "EchoCancel")
ENTRY(SineGenI, "SineFilter")
ENTRY(SquareGenI, "SquareFilter")
