"""The least host of a built libwavefilters.so that Python's ctypes can be: arrays in, arrays out."""
import ctypes as c

import numpy as np

Self = c.c_void_p


def table(functions):
    """A vtable; the functions must be kept alive as long as it is used."""
    return (c.c_void_p * len(functions))(*(c.cast(f, c.c_void_p).value for f in functions))


class Object:
    """A host's object as the library sees it: a pointer to a table of functions."""

    def __init__(self, operations):
        self.functions = [make(f) for make, f in operations]
        self.table = table(self.functions)
        self.memory = c.c_void_p(c.addressof(self.table))

    @property
    def address(self):
        return c.addressof(self.memory)


def unknown():
    count = c.CFUNCTYPE(c.c_uint64, Self)
    query = c.CFUNCTYPE(c.c_uint64, Self, c.c_void_p, c.c_void_p)
    return [(query, lambda *_: 0x80004002), (count, lambda _: 1), (count, lambda _: 1)]


class Source(Object):
    """Gives an array of samples; what a filter writes into its descriptor is kept there."""

    def __init__(self, samples, interval_ms=1.0):
        self.samples, self.position = np.ascontiguousarray(samples, np.float32), 0
        self.length, self.interval_ms = len(samples), interval_ms
        number = c.POINTER(c.c_double)

        def get_period(_, out):
            out[0] = self.interval_ms

        self.descriptor = Object(unknown() + [
            (c.CFUNCTYPE(c.c_int, Self), lambda _: self.length),
            (c.CFUNCTYPE(None, Self, c.c_int), lambda *_: None),
            (c.CFUNCTYPE(None, Self, number), get_period),
            (c.CFUNCTYPE(None, Self, c.c_double), lambda *_: None)])

        def get_descriptor(_, out):
            out[0] = self.descriptor.address

        def transmit(_, buffer, count, produced):
            block = self.samples[self.position:self.position + max(count, 0)]
            c.memmove(buffer, block.ctypes.data, block.nbytes)
            self.position += len(block)
            produced[0] = len(block)
            return 0

        nothing = c.CFUNCTYPE(None, Self)
        super().__init__(unknown() + [
            (c.CFUNCTYPE(None, Self, c.POINTER(c.c_void_p)), get_descriptor),
            (c.CFUNCTYPE(c.c_int, Self, c.c_void_p, c.c_int, c.POINTER(c.c_int)), transmit),
            (nothing, lambda _: None),
            (c.CFUNCTYPE(c.c_bool, Self), lambda _: self.position == len(self.samples)),
            (c.CFUNCTYPE(None, Self, c.c_bool), lambda *_: None)])


def call(address, slot, result, *typed):
    """Calls a slot of one of the library's objects with (type, value) pairs."""
    slots = c.cast(address, c.POINTER(c.POINTER(c.c_void_p)))[0]
    function = c.CFUNCTYPE(result, Self, *(t for t, _ in typed))(slots[slot])
    return function(address, *(v for _, v in typed))


def run(library, entry, parameters, samples):
    """All that a single-input filter makes of an array of samples."""
    factory, made = c.c_void_p(), c.c_void_p()
    getattr(c.CDLL(library), entry)(c.byref(factory))
    call(factory.value, 4, c.c_int, (c.c_void_p, c.addressof(made)))
    call(factory.value, 2, c.c_uint64)
    values = (c.c_double * len(parameters))(*parameters)
    call(made.value, 9, None, (c.c_void_p, c.addressof(values)), (c.c_int, len(parameters)))
    source = Source(samples)
    sources = (c.c_void_p * 1)(source.address)
    call(made.value, 8, None, (c.c_void_p, c.addressof(sources)), (c.c_int, 1))
    blocks, room, produced = [], np.empty(8192, np.float32), c.c_int()
    while not call(made.value, 6, c.c_bool):
        call(made.value, 4, c.c_int, (c.c_void_p, room.ctypes.data), (c.c_int, len(room)),
             (c.c_void_p, c.addressof(produced)))
        blocks.append(room[:produced.value].copy())
    call(made.value, 2, c.c_uint64)
    return np.concatenate(blocks) if blocks else np.empty(0, np.float32)
