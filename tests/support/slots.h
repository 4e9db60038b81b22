/* The binary contract as the tests understand it: tables of function pointers in slot order, for C
 * and C++. The tests declare them for themselves, so that a moved slot in the product breaks them.
 *
 * An object is a pointer to a struct whose first member points to its table. `self` is always that
 * pointer. References of C++ (int&) are pointers here; std::string by value is the address of a
 * string that the caller owns.
 */
#ifndef WAVEFILTERS_TESTS_SUPPORT_SLOTS_H
#define WAVEFILTERS_TESTS_SUPPORT_SLOTS_H

#include <stdbool.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

enum { SuccessCode = 0, MaxSlots = 17 };
#define NO_INTERFACE_CODE UINT64_C(0x80004002)

typedef struct Guid {
  uint64_t Data1;
  uint16_t Data2;
  uint16_t Data3;
  uint8_t Data4[8];
} Guid;

static const Guid UnknownId = {0, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
static const Guid WaveFilterId = {
    0x3bd1aa82, 0xd4ed, 0x49a1, {0xB4, 0x7A, 0x65, 0x6D, 0x23, 0x66, 0x89, 0xBF}};

/* Slots 0 to 2 of every table. All 64 bits of the results count. */
#define UNKNOWN_SLOTS                                                  \
  uint64_t (*QueryInterface)(void* self, const Guid* iid, void** out); \
  uint64_t (*AddRef)(void* self);                                      \
  uint64_t (*Release)(void* self)

/* A slot that nobody calls, or whose signature depends on the family of the filter. */
typedef void (*AnySlot)(void);

typedef struct SourceSlots {
  UNKNOWN_SLOTS;
  void (*GetDescriptor)(void* self, void** out);                           /*  3 */
  int (*TransmitNow)(void* self, float* buffer, int count, int* produced); /*  4 */
  void (*Dispose)(void* self);                                             /*  5 */
  bool (*EndOfSrc)(void* self);                                            /*  6 */
  void (*EnableInPlace)(void* self, bool flag);                            /*  7 */
} SourceSlots;

typedef struct FilterSlots {
  UNKNOWN_SLOTS;
  void (*GetDescriptor)(void* self, void** out);                           /*  3 */
  int (*TransmitNow)(void* self, float* buffer, int count, int* produced); /*  4 */
  void (*Dispose)(void* self);                                             /*  5 */
  bool (*EndOfSrc)(void* self);                                            /*  6 */
  void (*EnableInPlace)(void* self, bool flag);                            /*  7 */
  int (*Set_src_list)(void* self, void** sources, int count);              /*  8 */
  void (*Set_param_list)(void* self, double* values, int count);           /*  9 */
  void (*Set_console_out)(void* self, void* console);                      /* 10 */
  void (*Set_num_stream)(void* self, void* stream);                        /* 11 */
  int (*SrcSet)(void* self);                                               /* 12 */
  void (*InitFrom)(void* self, void* descriptor);                          /* 13 */
  void (*Init)(void* self, double interval_ms);                            /* 14 */
  AnySlot Slot15;                                                          /* 15 */
  AnySlot Slot16;                                                          /* 16 */
} FilterSlots;

/* Slots 15 and 16 by family. */
typedef void (*InPlaceApply)(void* self, float* samples, int count);          /* generators 15 */
typedef void (*BlockApply)(void* self, float* in, float* out, int count);     /* blocks 15 */
typedef void (*FirCalcCoef)(void* self, float* coef, int count, double T);    /* FIR 16 */
typedef int (*TrackGetMem)(void* self);                                       /* tracks 15 */
typedef void (*TrackApply)(void* self, float* samples, int count, int start); /* tracks 16 */
typedef void (*ResampleCalcCoef)(void* self, float* coef, int* count);        /* resampler 15 */
typedef void (*ResampleApply)(void* self, float* in, float* out, int countIn, int countOut,
                              int* consumed, int* produced); /* resampler 16 */

typedef struct DescriptorSlots {
  UNKNOWN_SLOTS;
  int (*GetLength)(void* self);                       /*  3 */
  void (*SetLength)(void* self, int length);          /*  4 */
  void (*GetPeriod)(void* self, double* interval_ms); /*  5 */
  void (*SetPeriod)(void* self, double interval_ms);  /*  6 */
  AnySlot Unused7, Unused8, Unused9;
  void (*SetRange)(void* self, double fullScale); /* 10 */
  AnySlot Unused11, Unused12, Unused13, Unused14, Unused15;
  void (*SetUnits)(void* self, const char* units);     /* 16 */
  void (*GetName)(void* self, char* buffer, int size); /* 17 */
} DescriptorSlots;

typedef struct ConsoleSlots {
  UNKNOWN_SLOTS;
  void (*PutStr)(void* self, const char* text); /* 3 */
  AnySlot Unused4;
  void (*NewLine)(void* self); /* 5 */
  AnySlot Unused6;
  void (*PutNum)(void* self, int width, int precision, double value); /* 7 */
  void (*GetTime)(void* self, double* seconds);                       /* 8 */
} ConsoleSlots;

typedef struct NumStreamSlots {
  UNKNOWN_SLOTS;
  bool (*Open)(void* self, char* name);                  /*  3 */
  bool (*GetSingle)(void* self, float* value);           /*  4 */
  bool (*GetDouble)(void* self, double* value);          /*  5 */
  bool (*GetLine)(void* self);                           /*  6 */
  void (*Close)(void* self);                             /*  7 */
  bool (*OpenString)(void* self, const void* name);      /*  8: std::string */
  bool (*OpenFromString)(void* self, const void* text);  /*  9: std::string */
  int (*BytesRemain)(void* self);                        /* 10 */
  void (*SkipBytes)(void* self, int count);              /* 11 */
  int (*ReadBytes)(void* self, char* buffer, int count); /* 12 */
} NumStreamSlots;

typedef struct FactorySlots {
  UNKNOWN_SLOTS;
  void (*SetStr)(void* self, char* text);              /* 3 */
  int (*GetFilter)(void* self, void** out);            /* 4 */
  int (*GetDialog)(void* self, void** out);            /* 5 */
  int (*GetNamed)(void* self, char* name, void** out); /* 6 */
} FactorySlots;

typedef void* (*EntryPoint)(void** out);

#undef UNKNOWN_SLOTS
#ifdef __cplusplus
}
#endif
#endif
