"""Recordings with one thing wrong, or merely unusual, in each; the name of a case tells what.

Every good one has 1000 samples of 16 bits at 16 kHz, one channel.
"""

import random
import struct

COUNT = 1000
RATE = 16000
SAMPLES = [(i * 37 % 2001 - 1000) * 16 for i in range(COUNT)]


def pack(order, code, value):
    return struct.pack(order + code, value)


def wav(order="<", riff=None, riff_size=None, wave=b"WAVE", fmt_id=b"fmt ", fmt_size=16, tag=1, channels=1, rate=RATE,
        byte_rate=2 * RATE, align=2, bits=16, extra=b"", data_id=b"data", data_size=None, before=b"", between=b"", after=b"", data=None):
    """A WAV file with any field replaced."""
    if data is None:
        data = struct.pack(f"{order}{COUNT}h", *SAMPLES)
    fmt = struct.pack(order + "HHIIHH", tag, channels, rate, byte_rate, align, bits) + extra
    chunks = before + fmt_id + pack(order, "I", fmt_size) + fmt + between
    chunks += data_id + pack(order, "I", len(data) if data_size is None else data_size) + data + after
    size = 4 + len(chunks) if riff_size is None else riff_size
    return (riff or (b"RIFF" if order == "<" else b"RIFX")) + pack(order, "I", size) + wave + chunks


def extended(rate):
    """A rate as AIFF writes it: 80 bits."""
    exponent = rate.bit_length() - 1
    return struct.pack(">HQ", 16383 + exponent, rate << (63 - exponent))


def aiff(form=b"FORM", form_size=None, kind=b"AIFF", comm_id=b"COMM", comm_size=18, channels=1, frames=COUNT, bits=16, rate=None,
         extra=b"", ssnd_id=b"SSND", ssnd_size=None, offset=0, block=0, before=b"", after=b"", data=None):
    """An AIFF file with any field replaced."""
    if data is None:
        data = struct.pack(f">{COUNT}h", *SAMPLES)
    comm = struct.pack(">hIh", channels, frames, bits) + (extended(RATE) if rate is None else rate) + extra
    chunks = before + comm_id + pack(">", "I", comm_size) + comm
    chunks += ssnd_id + pack(">", "I", 8 + len(data) if ssnd_size is None else ssnd_size) + struct.pack(">II", offset, block) + data + after
    return form + pack(">", "I", 4 + len(chunks) if form_size is None else form_size) + kind + chunks


W64_TAILS = b"\x2e\x91\xcf\x11\xa5\xd6\x28\xdb\x04\xc1\x00\x00", b"\xf3\xac\xd3\x11\x8c\xd1\x00\xc0\x4f\x8e\xdb\x8a"


def w64(riff=b"riff" + W64_TAILS[0], size=None, wave=b"wave" + W64_TAILS[1], fmt_id=b"fmt " + W64_TAILS[1], fmt_size=40, tag=1, channels=1,
        rate=RATE, align=2, bits=16, data_id=b"data" + W64_TAILS[1], data_size=None, data=None):
    """A W64 file with any field replaced."""
    if data is None:
        data = struct.pack(f"<{COUNT}h", *SAMPLES)
    fmt = struct.pack("<HHIIHH", tag, channels, rate & 0xFFFFFFFF, 2 * RATE, align, bits)
    chunks = wave + fmt_id + pack("<", "Q", fmt_size) + fmt + data_id + pack("<", "Q", 24 + len(data) if data_size is None else data_size) + data
    return riff + pack("<", "Q", 24 + len(chunks) if size is None else size) + chunks


def rf64(riff=b"RF64", riff_size=0xFFFFFFFF, ds64_id=b"ds64", ds64_size=28, big_riff=None, big_data=None, frames=COUNT, table=0,
         data_size=0xFFFFFFFF, tag=1, channels=1, rate=RATE, align=2, bits=16, data=None):
    """An RF64 file with any field replaced."""
    if data is None:
        data = struct.pack(f"<{COUNT}h", *SAMPLES)
    fmt = b"fmt " + pack("<", "I", 16) + struct.pack("<HHIIHH", tag, channels, rate, 2 * RATE, align, bits)
    size = 4 + 8 + 28 + len(fmt) + 8 + len(data) if big_riff is None else big_riff
    ds64 = ds64_id + pack("<", "I", ds64_size) + struct.pack("<QQQI", size, len(data) if big_data is None else big_data, frames, table)
    return riff + pack("<", "I", riff_size) + b"WAVE" + ds64 + fmt + b"data" + pack("<", "I", data_size) + data


def au(magic=b".snd", offset=24, size=None, encoding=3, rate=RATE, channels=1, data=None):
    """An AU file with any field replaced."""
    if data is None:
        data = struct.pack(f">{COUNT}h", *SAMPLES)
    return magic + struct.pack(">IIIII", offset, len(data) if size is None else size, encoding, rate, channels) + data


def caf(magic=b"caff", version=1, desc_id=b"desc", desc_size=32, rate=float(RATE), kind=b"lpcm", flags=0, bytes_per=2, frames_per=1, channels=1,
        bits=16, data_id=b"data", data_size=None, data=None):
    """A CAF file with any field replaced."""
    if data is None:
        data = struct.pack(f">{COUNT}h", *SAMPLES)
    desc = struct.pack(">d", rate) + kind + struct.pack(">IIIII", flags, bytes_per, frames_per, channels, bits)
    return (magic + struct.pack(">HH", version, 0) + desc_id + struct.pack(">q", desc_size) + desc
            + data_id + struct.pack(">q", 4 + len(data) if data_size is None else data_size) + bytes(4) + data)


def spoiled(good, at, replacement):
    return good[:at] + replacement + good[at + len(replacement) :]


def wav_headers():
    full = 2**32 - 1
    one = struct.pack("<h", SAMPLES[0])
    float_data = struct.pack(f"<{COUNT}f", *(s / 32768.0 for s in SAMPLES))
    odd_floats = struct.pack("<5f", float("nan"), float("inf"), float("-inf"), 1e-45, 3.4e38)
    guid = bytes.fromhex("000000001000800000aa00389b71")
    extensible = struct.pack("<HHI", 22, 16, 4)
    return {
        "good": wav(), "big_endian": wav(order=">"), "no_riff": wav(riff=b"riff"), "list_instead_of_riff": wav(riff=b"LIST"),
        "riff_size_0": wav(riff_size=0), "riff_size_1": wav(riff_size=1), "riff_size_less": wav(riff_size=1000), "riff_size_more": wav(riff_size=99999),
        "riff_size_negative": wav(riff_size=2**31), "riff_size_full": wav(riff_size=full), "no_wave": wav(wave=b"AVI "), "wave_in_zeros": wav(wave=bytes(4)),
        "no_fmt": wav(fmt_id=b"xxxx"), "fmt_size_0": wav(fmt_size=0), "fmt_size_1": wav(fmt_size=1), "fmt_size_14": wav(fmt_size=14),
        "fmt_size_15": wav(fmt_size=15), "fmt_size_17": wav(fmt_size=17, extra=b"\0"), "fmt_size_18": wav(fmt_size=18, extra=b"\0\0"),
        "fmt_size_more": wav(fmt_size=1000), "fmt_size_negative": wav(fmt_size=2**31), "fmt_size_full": wav(fmt_size=full),
        "fmt_twice": wav(between=b"fmt " + struct.pack("<IHHIIHH", 16, 1, 2, 8000, 32000, 4, 16)), "data_before_fmt": wav(before=b"data" + struct.pack("<I", 4) + b"abcd"),
        "tag_0": wav(tag=0), "tag_unknown": wav(tag=0x1234), "tag_full": wav(tag=0xFFFF), "tag_mp3": wav(tag=0x55), "tag_adpcm": wav(tag=2, bits=4, align=256),
        "tag_ima_adpcm": wav(tag=0x11, bits=4, align=256), "tag_gsm": wav(tag=0x31, bits=0, align=65), "tag_alaw_16_bits": wav(tag=6),
        "tag_float_16_bits": wav(tag=3), "tag_float_8_bits": wav(tag=3, bits=8, align=1), "tag_extensible_short": wav(tag=0xFFFE),
        "extensible": wav(tag=0xFFFE, fmt_size=40, extra=extensible + b"\1\0" + guid), "extensible_unknown": wav(tag=0xFFFE, fmt_size=40, extra=extensible + b"\x99\x99" + guid),
        "extensible_cut": wav(tag=0xFFFE, fmt_size=40, extra=extensible),
        "channels_0": wav(channels=0), "channels_2_of_1": wav(channels=2), "channels_3_half": wav(channels=3, align=6), "channels_1024": wav(channels=1024, align=2048),
        "channels_1025": wav(channels=1025, align=2050), "channels_full": wav(channels=0xFFFF, align=0xFFFE),
        "rate_0": wav(rate=0), "rate_1": wav(rate=1, byte_rate=2), "rate_negative": wav(rate=2**31), "rate_full": wav(rate=full), "rate_million": wav(rate=1000001),
        "byte_rate_0": wav(byte_rate=0), "byte_rate_full": wav(byte_rate=full), "align_0": wav(align=0), "align_1": wav(align=1), "align_3": wav(align=3), "align_full": wav(align=0xFFFF),
        "bits_0": wav(bits=0), "bits_1": wav(bits=1), "bits_7": wav(bits=7), "bits_8": wav(bits=8, align=1), "bits_12": wav(bits=12), "bits_17": wav(bits=17), "bits_33": wav(bits=33),
        "bits_64": wav(bits=64), "bits_full": wav(bits=0xFFFF), "no_data": wav(data_id=b"xxxx"), "data_size_0": wav(data_size=0), "data_size_1": wav(data_size=1),
        "data_size_odd": wav(data_size=1999), "data_size_less": wav(data_size=1000), "data_size_more": wav(data_size=2002), "data_size_much_more": wav(data_size=2**30),
        "data_size_unfilled": wav(riff_size=full, data_size=full), "data_size_signed_limit": wav(data_size=2**31 - 1), "data_size_negative": wav(data_size=2**31), "data_empty": wav(data=b""),
        "data_one_sample": wav(data=one), "data_half_a_sample": wav(data=one[:1]), "data_twice": wav(after=b"data" + struct.pack("<I", 4) + b"abcd"),
        "chunk_before": wav(before=b"LIST" + struct.pack("<I", 4) + b"INFO"), "chunk_before_size_more": wav(before=b"junk" + struct.pack("<I", 99999)),
        "chunk_before_size_full": wav(before=b"junk" + struct.pack("<I", full)), "chunk_before_odd": wav(before=b"junk" + struct.pack("<I", 3) + b"abc\0"),
        "chunk_behind_cut": wav(after=b"LIST" + struct.pack("<I", 99999) + b"INFO"), "chunk_behind_1_byte": wav(after=b"L"), "chunks_thousand": wav(before=(b"junk" + struct.pack("<I", 0)) * 1000),
        "name_in_zeros": wav(before=bytes(8)), "comment_endless": wav(after=b"LIST" + struct.pack("<I", 20) + b"INFOICMT" + struct.pack("<I", full) + b"abcd"),
        "cue_points_many": wav(before=b"cue " + struct.pack("<II", 4, full)), "sampler_loops_many": wav(before=b"smpl" + struct.pack("<I9I", 36, *[0] * 7, full, full)),
        "fact_wrong": wav(before=b"fact" + struct.pack("<II", 4, full)), "peak_wrong": wav(tag=3, bits=32, align=4, byte_rate=4 * RATE, data=float_data, before=b"PEAK" + struct.pack("<I", 2**31)),
        "bext_cut": wav(before=b"bext" + struct.pack("<I", 602)), "cart_cut": wav(before=b"cart" + struct.pack("<I", 2048)),
        "floats": wav(tag=3, bits=32, align=4, byte_rate=4 * RATE, data=float_data), "floats_odd": wav(tag=3, bits=32, align=4, byte_rate=4 * RATE, data=odd_floats),
    }


def aiff_headers():
    full = 2**32 - 1
    return {
        "good": aiff(), "no_form": aiff(form=b"form"), "form_size_0": aiff(form_size=0), "form_size_more": aiff(form_size=99999), "form_size_full": aiff(form_size=full),
        "kind_unknown": aiff(kind=b"AIFX"), "aifc_without_kind": aiff(kind=b"AIFC"), "aifc_none": aiff(kind=b"AIFC", comm_size=24, extra=b"NONE\0\0"),
        "aifc_unknown": aiff(kind=b"AIFC", comm_size=24, extra=b"zzzz\0\0"), "aifc_name_too_long": aiff(kind=b"AIFC", comm_size=24, extra=b"NONE\xff\0"),
        "no_comm": aiff(comm_id=b"xxxx"), "comm_size_0": aiff(comm_size=0), "comm_size_17": aiff(comm_size=17), "comm_size_more": aiff(comm_size=9999), "comm_size_full": aiff(comm_size=full),
        "channels_0": aiff(channels=0), "channels_negative": aiff(channels=-1), "channels_2_of_1": aiff(channels=2), "channels_1025": aiff(channels=1025), "channels_most": aiff(channels=32767),
        "frames_0": aiff(frames=0), "frames_less": aiff(frames=500), "frames_more": aiff(frames=5000), "frames_full": aiff(frames=full), "bits_0": aiff(bits=0), "bits_1": aiff(bits=1),
        "bits_12": aiff(bits=12), "bits_33": aiff(bits=33), "bits_negative": aiff(bits=-16), "rate_0": aiff(rate=bytes(10)), "rate_negative": aiff(rate=b"\xc0" + extended(RATE)[1:]),
        "rate_infinite": aiff(rate=b"\x7f\xff" + bytes(8)), "rate_not_a_number": aiff(rate=b"\x7f\xff" + b"\xff" * 8), "rate_huge": aiff(rate=b"\x7f\xfe" + b"\xff" * 8),
        "rate_fraction": aiff(rate=b"\x3f\xfe" + b"\x80" + bytes(7)), "no_ssnd": aiff(ssnd_id=b"xxxx"), "ssnd_size_0": aiff(ssnd_size=0), "ssnd_size_4": aiff(ssnd_size=4),
        "ssnd_size_less": aiff(ssnd_size=1008), "ssnd_size_more": aiff(ssnd_size=99999), "ssnd_size_full": aiff(ssnd_size=full), "offset_more": aiff(offset=99999), "offset_full": aiff(offset=full),
        "block_full": aiff(block=full), "data_empty": aiff(data=b""), "data_half_a_sample": aiff(data=b"x"), "chunk_before_size_full": aiff(before=b"NAME" + struct.pack(">I", full)),
        "marks_many": aiff(before=b"MARK" + struct.pack(">IH", 2, 65535)), "chunk_behind_cut": aiff(after=b"ANNO" + struct.pack(">I", 999)), "comment_cut": aiff(before=b"COMT" + struct.pack(">IH", 2, 999)),
    }


def w64_headers():
    full = 2**64 - 1
    good = w64()
    return {
        "good": good, "riff_guid_wrong": spoiled(good, 5, b"\0"), "size_0": w64(size=0), "size_less": w64(size=100), "size_more": w64(size=99999), "size_full": w64(size=full),
        "size_negative": w64(size=2**63), "wave_guid_wrong": spoiled(good, 30, b"\0"), "fmt_guid_wrong": spoiled(good, 45, b"\0"), "fmt_size_0": w64(fmt_size=0), "fmt_size_23": w64(fmt_size=23),
        "fmt_size_24": w64(fmt_size=24), "fmt_size_more": w64(fmt_size=9999), "fmt_size_full": w64(fmt_size=full), "tag_unknown": w64(tag=0x4321), "channels_0": w64(channels=0), "channels_1025": w64(channels=1025),
        "rate_0": w64(rate=0), "rate_full": w64(rate=2**32 - 1), "align_0": w64(align=0), "bits_0": w64(bits=0), "bits_33": w64(bits=33), "data_guid_wrong": spoiled(good, 90, b"\0"), "data_size_0": w64(data_size=0),
        "data_size_23": w64(data_size=23), "data_size_less": w64(data_size=1024), "data_size_more": w64(data_size=99999), "data_size_full": w64(data_size=full), "data_size_negative": w64(data_size=2**63), "data_empty": w64(data=b""),
    }


def rf64_headers():
    full = 2**64 - 1
    return {
        "good": rf64(), "riff_size_0": rf64(riff_size=0), "no_ds64": rf64(ds64_id=b"JUNK"), "ds64_size_0": rf64(ds64_size=0), "ds64_size_27": rf64(ds64_size=27), "ds64_size_more": rf64(ds64_size=9999),
        "ds64_size_full": rf64(ds64_size=2**32 - 1), "riff_size_less": rf64(big_riff=10), "riff_size_more": rf64(big_riff=99999), "riff_size_full": rf64(big_riff=full), "data_size_zero": rf64(big_data=0),
        "data_size_less": rf64(big_data=1000), "data_size_more": rf64(big_data=99999), "data_size_negative": rf64(big_data=2**63), "data_size_full": rf64(big_data=full), "frames_0": rf64(frames=0),
        "frames_full": rf64(frames=full), "table_many": rf64(table=2**32 - 1), "data_size_plain": rf64(data_size=2 * COUNT), "channels_0": rf64(channels=0), "channels_1025": rf64(channels=1025), "rate_0": rf64(rate=0),
        "bits_0": rf64(bits=0), "align_0": rf64(align=0), "tag_unknown": rf64(tag=0x4321), "data_empty": rf64(data=b""),
    }


def au_headers():
    full = 2**32 - 1
    return {
        "good": au(), "magic_reversed": au(magic=b"dns."), "offset_0": au(offset=0), "offset_8": au(offset=8), "offset_23": au(offset=23), "offset_more": au(offset=99999), "offset_full": au(offset=full),
        "size_0": au(size=0), "size_less": au(size=1000), "size_more": au(size=99999), "size_unknown": au(size=full), "encoding_0": au(encoding=0), "encoding_unknown": au(encoding=99), "encoding_full": au(encoding=full),
        "rate_0": au(rate=0), "rate_full": au(rate=full), "channels_0": au(channels=0), "channels_1025": au(channels=1025), "channels_full": au(channels=full), "data_empty": au(data=b""),
    }


def caf_headers():
    return {
        "good": caf(), "version_0": caf(version=0), "no_desc": caf(desc_id=b"xxxx"), "desc_size_0": caf(desc_size=0), "desc_size_negative": caf(desc_size=-1), "desc_size_more": caf(desc_size=99999),
        "rate_0": caf(rate=0.0), "rate_negative": caf(rate=-16000.0), "rate_infinite": caf(rate=float("inf")), "rate_not_a_number": caf(rate=float("nan")), "rate_huge": caf(rate=1e300), "kind_unknown": caf(kind=b"zzzz"),
        "flags_full": caf(flags=2**32 - 1), "bytes_0": caf(bytes_per=0), "bytes_full": caf(bytes_per=2**32 - 1), "channels_0": caf(channels=0), "channels_1025": caf(channels=1025), "channels_full": caf(channels=2**32 - 1),
        "bits_0": caf(bits=0), "bits_33": caf(bits=33), "no_data": caf(data_id=b"xxxx"), "data_size_0": caf(data_size=0), "data_size_unknown": caf(data_size=-1), "data_size_less": caf(data_size=1004),
        "data_size_more": caf(data_size=99999), "data_size_negative": caf(data_size=-2), "data_empty": caf(data=b""),
    }


HEADERS = {"wav": wav_headers, "aiff": aiff_headers, "w64": w64_headers, "rf64": rf64_headers, "au": au_headers, "caf": caf_headers}
GOOD = {"wav": wav, "aiff": aiff, "w64": w64, "rf64": rf64, "au": au, "caf": caf}


def flac_headers(good):
    """Of a good FLAC file, as bytes: each field of its first block spoiled."""
    frames = 4 + sum(4 + int.from_bytes(block[1:4], "big") for block in flac_blocks(good))
    return {
        "good": good, "magic_wrong": spoiled(good, 0, b"fLaX"), "magic_alone": good[:4], "first_block_of_another_kind": spoiled(good, 4, b"\x04"), "first_block_size_0": spoiled(good, 5, bytes(3)),
        "first_block_size_full": spoiled(good, 5, b"\xff\xff\xff"), "block_sizes_0": spoiled(good, 8, bytes(4)), "block_sizes_1": spoiled(good, 8, b"\0\1\0\1"), "block_sizes_full": spoiled(good, 8, b"\xff" * 4),
        "frame_sizes_full": spoiled(good, 12, b"\xff" * 6), "rate_0": spoiled(good, 18, bytes(2) + bytes([good[20] & 0x0F])), "rate_full": spoiled(good, 18, b"\xff\xff" + bytes([good[20] | 0xF0])),
        "channels_8": spoiled(good, 20, bytes([good[20] | 0x0E])), "bits_1": spoiled(good, 20, bytes([good[20] & 0xFE, good[21] & 0x0F])), "bits_32": spoiled(good, 20, bytes([good[20] | 1, good[21] | 0xF0])),
        "count_0": spoiled(good, 21, bytes([good[21] & 0xF0]) + bytes(4)), "count_less": spoiled(good, 22, struct.pack(">I", 500)), "count_more": spoiled(good, 22, struct.pack(">I", 100000)),
        "count_full": spoiled(good, 21, bytes([good[21] | 0x0F]) + b"\xff" * 4), "checksum_wrong": spoiled(good, 26, bytes(16)), "header_alone": good[:42], "blocks_without_end": spoiled(good, 4, b"\0"),
        "frames_missing": good[:frames], "first_frame_spoiled": spoiled(good, frames, b"\0\0"), "cut_in_a_frame": good[: (frames + len(good)) // 2], "noise_behind": good + b"\xff" * 1000,
        "name_tag_before": b"ID3\x04\0\0\0\0\0\x0a" + bytes(10) + good,
    }


def flac_blocks(good):
    """The blocks ahead of a FLAC file's frames."""
    at = 4
    blocks = []
    while not blocks or not blocks[-1][0] & 0x80:
        size = int.from_bytes(good[at + 1 : at + 4], "big")
        blocks.append(good[at : at + 4 + size])
        at += 4 + size
    return blocks


def cuts(good):
    """A good file cut at so many bytes, and other contents that are none."""
    noise = random.Random(3)
    cases = {f"cut_at_{size}": good[:size] for size in (1, 4, 8, 12, 20, 36, 40, 44, 60, 100)}
    cases["in_zeros"] = bytes(4096)
    cases["in_ones"] = b"\xff" * 4096
    cases["random_behind_12_bytes"] = good[:12] + noise.randbytes(4000)
    cases["as_text"] = good.hex().encode()
    return cases


# What every reader takes, since the format allows it or the field means nothing.
READ = {
    "wav": "good big_endian fmt_size_18 extensible byte_rate_0 byte_rate_full data_size_unfilled chunk_before chunk_before_odd chunks_thousand floats",
    "aiff": "good aifc_none",
    "w64": "good",
    "rf64": "good data_size_plain",
    "au": "good size_unknown",
    "caf": "good",
    "flac": "good noise_behind",
}
# What nothing can be made of: no samples to be found, or no telling what they are.
REFUSED = {
    "wav": "no_riff list_instead_of_riff no_wave wave_in_zeros no_fmt fmt_size_0 fmt_size_1 fmt_size_14 fmt_size_negative fmt_size_full tag_0 tag_unknown "
    "tag_full tag_mp3 tag_extensible_short extensible_unknown extensible_cut channels_0 channels_1025 channels_full rate_0 rate_negative rate_full bits_0 "
    "bits_33 bits_64 bits_full no_data data_size_more data_size_much_more chunk_before_size_full name_in_zeros",
    "aiff": "no_form kind_unknown aifc_unknown no_comm comm_size_0 comm_size_full channels_0 channels_negative channels_1025 channels_most bits_0 bits_33 "
    "bits_negative rate_negative no_ssnd ssnd_size_more chunk_before_size_full",
    "w64": "riff_guid_wrong size_more wave_guid_wrong fmt_guid_wrong fmt_size_0 fmt_size_23 fmt_size_full tag_unknown channels_0 channels_1025 rate_0 "
    "rate_full bits_0 bits_33",
    "rf64": "no_ds64 ds64_size_full riff_size_more channels_0 channels_1025 rate_0 bits_0 tag_unknown",
    "au": "offset_full size_more encoding_0 encoding_unknown encoding_full rate_0 rate_full channels_0 channels_1025 channels_full",
    "caf": "no_desc desc_size_0 desc_size_negative rate_0 rate_negative rate_infinite rate_not_a_number rate_huge kind_unknown bytes_0 bytes_full channels_0 "
    "channels_1025 channels_full bits_0 bits_33 no_data data_size_more data_size_negative",
    "flac": "magic_wrong magic_alone first_block_of_another_kind rate_0 bits_1 bits_32 count_more count_full header_alone frames_missing first_frame_spoiled "
    "cut_in_a_frame",
}


def recordings(flac):
    """All cases: (format, name, bytes, verdict); `flac` is a good file of that format. The verdict is "read" (every sample),
    "refused", "several" (of channels, of which one is to be chosen) or "either"."""
    several = ("channels_2_of_1", "channels_3_half", "channels_1024", "channels_8")
    for kind in READ:
        headers = flac_headers(flac) if kind == "flac" else HEADERS[kind]()
        for name, content in headers.items():
            verdict = "several" if name in several else "either"
            verdict = "read" if name in READ[kind].split() else "refused" if name in REFUSED[kind].split() else verdict
            yield kind, name, content, verdict
        for name, content in cuts(headers["good"]).items():
            yield kind, name, content, "refused"
