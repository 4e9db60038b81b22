#ifndef WAVEFILTERS_FRAME_INTERFACES_H
#define WAVEFILTERS_FRAME_INTERFACES_H

// Every interface that crosses the boundary between a host and the library.
//
// The order of the virtual operations is the binary contract (Itanium C++ ABI): the
// number beside each declaration is its place in the vtable, and no operation may be
// added, removed or moved. Slots 0 to 2 are IUnknown's everywhere.
//
// Units, everywhere: a sample is one 32-bit float of one channel; the sampling interval
// is a double in milliseconds (0.1 means 10 kHz), never a rate; a length is a signed
// 32-bit count of samples.
//
// The host sets a filter up in this order, then pulls:
//   1. Set_param_list, Set_console_out, Set_num_stream, in any order;
//   2. Set_src_list, which ends in SrcSet, Init(descriptor) and Init(interval_ms);
//   3. GetDescriptor, to learn what the filter will deliver;
//   4. TransmitNow until EndOfSrc is true or the announced length is reached;
//   5. Dispose, then the last Release.
// One thread drives a filter at a time. Nothing is reported as an error: a filter whose
// data are missing delivers zeros or leaves its input as it is.

#include <string>

#include "frame/guid.h"
#include "frame/unknown.h"

namespace wavefilters {

class IWaveDescriptorC;
class IConsoleOutC;
class INumStreamC;

/// A source of samples. Implemented by the host for its recordings and by every filter.
class IWaveSourceC : public TUnknown {
 public:
  /// Slot 3. Stores in `*out` a descriptor of what this source delivers, with one
  /// reference that the caller must release. A filter hands on its source's descriptor,
  /// amended in place: a source gives a fresh object to each caller, or sees it changed.
  virtual void GetDescriptor(IWaveDescriptorC** out) = 0;
  /// Slot 4. Writes up to `count` samples to `buffer` (the caller's) and sets `produced`
  /// to their number; fewer than `count` only at the end of the signal. Filters also ask
  /// with a count of 0 or below, which must be answered with 0. The result means nothing.
  virtual int TransmitNow(float* buffer, int count, int& produced) = 0;
  /// Slot 5. Lets go of what lies upstream (files, sources), ahead of the last Release.
  virtual void Dispose() = 0;
  /// Slot 6. True once the source will deliver no more samples.
  virtual bool EndOfSrc() = 0;

 protected:
  ~IWaveSourceC() = default;
};

/// A source that has sources and settings of its own. A host's own sources must have
/// slot 7 too: filters pass its hint up the chain without asking what they reach.
class IWaveFilterC : public IWaveSourceC {
 public:
  /// Slot 0, for every filter: answers IWaveFilterC's identifier and IUnknown's.
  unsigned long QueryInterface(const _GUID& iid, void** out) override {
    return Answer(iid == IID_IWaveFilterC || iid == IID_IUnknown, out);
  }
  /// Slot 7. Passes a hint about in-place processing to the head of the chain.
  virtual void EnableInPlace(bool flag) = 0;
  /// Slot 8. Hands over the sources: the caller's reference to each passes to the filter,
  /// which keeps what it needs and releases the rest. Any previous source is disposed of
  /// first. With `count` below 1 the filter is left without a source. The array stays the
  /// caller's. Returns what `SrcSet` returned, 0 where it was not called.
  virtual int Set_src_list(IWaveSourceC** sources, int count) = 0;
  /// Slot 9. Sets the numeric parameters in the filter's documented order, as far as
  /// `count` reaches; a count of 0 or below sets none, extra values are ignored. Whole
  /// numbers are truncated toward zero. The array stays the caller's.
  virtual void Set_param_list(double* values, int count) = 0;
  /// Slot 10. Gives the filter a console for its reports, or null. The filter adds a
  /// reference of its own and keeps it until its last Release or the next console.
  virtual void Set_console_out(IConsoleOutC* console) = 0;
  /// Slot 11. Gives the filter a reader of number files. Filters that read text files
  /// keep a reference of their own (and take no null); the others keep nothing.
  virtual void Set_num_stream(INumStreamC* stream) = 0;
  /// Slot 12. Called by Set_src_list once the source is in place: reads its descriptor
  /// and initialises. Without a source it must not be called. Returns 0.
  virtual int SrcSet() = 0;
  /// Slot 13. Initialises from a descriptor, which stays the caller's.
  virtual void Init(IWaveDescriptorC* descriptor) = 0;
  /// Slot 14. Initialises for a sampling interval in milliseconds.
  virtual void Init(double interval_ms) = 0;

 protected:
  ~IWaveFilterC() = default;
};

/// Description of a signal. Implemented by the host; the library never makes one.
/// The library leaves the reserved slots alone, yet the host's table must have them.
class IWaveDescriptorC : public TUnknown {
 public:
  /// Slot 3. Length in samples.
  virtual int GetLength() = 0;
  /// Slot 4.
  virtual void SetLength(int length) = 0;
  /// Slot 5. Stores the sampling interval, in milliseconds, in `*interval_ms`.
  virtual void GetPeriod(double* interval_ms) = 0;
  /// Slot 6.
  virtual void SetPeriod(double interval_ms) = 0;
  virtual void Reserved7() = 0;
  virtual void Reserved8() = 0;
  virtual void Reserved9() = 0;
  /// Slot 10. The signal's full-scale value, in its unit.
  virtual void SetRange(double fullScale) = 0;
  virtual void Reserved11() = 0;
  virtual void Reserved12() = 0;
  virtual void Reserved13() = 0;
  virtual void Reserved14() = 0;
  virtual void Reserved15() = 0;
  /// Slot 16. The unit as text, such as "mm/s"; the text stays the caller's.
  virtual void SetUnits(const char* units) = 0;
  /// Slot 17. Copies the signal's file name (a path with its extension), with its closing
  /// zero, into `buffer` of `size` bytes (512 from this library), cutting it if need be.
  virtual void GetName(char* buffer, int size) = 0;

 protected:
  ~IWaveDescriptorC() = default;
};

/// A text console with a clock. Implemented by the host; without one, nothing is reported.
class IConsoleOutC : public TUnknown {
 public:
  /// Slot 3. Writes text; it stays the caller's.
  virtual void PutStr(const char* text) = 0;
  virtual void Reserved4() = 0;
  /// Slot 5. Ends the current line.
  virtual void NewLine() = 0;
  virtual void Reserved6() = 0;
  /// Slot 7. Writes a number in a field of `width` characters with `precision` decimals.
  virtual void PutNum(int width, int precision, double value) = 0;
  /// Slot 8. Stores the reading of a clock, in seconds, in `*seconds`.
  virtual void GetTime(double* seconds) = 0;

 protected:
  ~IConsoleOutC() = default;
};

/// A reader of numbers from a file: line by line from text, or measured bytes from a
/// binary file; which of the two is settled when it is made. The library's own is
/// NumStream; a host may supply another. Strings passed by value are the caller's to end.
class INumStreamC : public TUnknown {
 public:
  /// Slot 3. Closes what is open, then opens the named file; true when it is open.
  virtual bool Open(char* name) = 0;
  /// Slot 4. Reads the next number of the current line; false, for the rest of the line,
  /// at its end and at anything that is not a number.
  virtual bool GetSingle(float& value) = 0;
  /// Slot 5. The same in double precision.
  virtual bool GetDouble(double& value) = 0;
  /// Slot 6. Makes the next line current; false at the end of the file.
  virtual bool GetLine() = 0;
  /// Slot 7. Closes the file, if one is open.
  virtual void Close() = 0;
  /// Slot 8. As slot 3.
  virtual bool Open(std::string name) = 0;
  /// Slot 9. As slot 8: the text is a file name, there is no reading from memory.
  virtual bool OpenFromString(std::string text) = 0;
  /// Slot 10. Binary: bytes not yet skipped. Otherwise 0.
  virtual int BytesRemain() = 0;
  /// Slot 11. Binary: moves on by `count` bytes, at most what remains; a negative count
  /// moves back.
  virtual void SkipBytes(int count) = 0;
  /// Slot 12. Binary: reads up to `count` bytes, at most what remains, into `buffer` (the
  /// caller's) and returns that number. What remains is not reduced.
  virtual int ReadBytes(char* buffer, int count) = 0;

 protected:
  ~INumStreamC() = default;
};

/// A settings dialog. Named by `IFilterFactory::GetDialog` only; no filter has one.
class IFilterDialog : public TUnknown {
 protected:
  ~IFilterDialog() = default;
};

/// What an entry point hands out: the host's one handle on a kind of filter. It keeps no
/// state; the filters it made outlive it.
class IFilterFactory : public TUnknown {
 public:
  /// Slot 3. Accepted and ignored.
  virtual void SetStr(char* text) = 0;
  /// Slot 4. Stores a new filter in `*out`, with one reference that is the caller's, no
  /// source, no console and its kind's defaults. Returns 1, deliberately unlike
  /// QueryInterface's 0. A failed allocation passes as std::bad_alloc, nothing is stored.
  virtual int GetFilter(IWaveFilterC** out) = 0;
  /// Slot 5. Stores null and returns 0.
  virtual int GetDialog(IFilterDialog** out) = 0;
  /// Slot 6. "WaveFilterC" gives what GetFilter gives, "FilterDialog" what GetDialog
  /// gives; any other name gives null and 0. `name` must not be null.
  virtual int GetNamed(char* name, IUnknown** out) = 0;

 protected:
  ~IFilterFactory() = default;
};

/// Type of the thirteen exported entry points: makes a factory with one reference, which
/// is the caller's, stores it in `*out` and returns it. A failed allocation passes as
/// std::bad_alloc with nothing stored.
using EntryPoint = IFilterFactory* (*)(IFilterFactory** out);

}  // namespace wavefilters

#endif
