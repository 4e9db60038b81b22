"""Records of how outputs were made, and lists of files for a batch, with one thing wrong, or merely unusual, in each.

Of records: name -> (content, verdict), which is "shown" or "refused"; of lists: name -> content, and all of them are refused.
"""

import json
import struct
import zlib

RECORD = {
    "wavechain": "1.0.0", "library": {"file": "libwavefilters.so.1", "sha256": "0" * 64}, "input": {"file": "take.wav", "sha256": None, "channel": 1},
    "filters": ["SineFilter frequency=100"], "files": [], "options": {"seed": 7, "block": 4096}, "output": {"format": "wav", "encoding": "float32", "unit": "mm", "full_scale": 1.0},
}
PICTURE = {"window_ms": 5.0, "dynamics_db": 60.0}
ESCAPES = "\x1b[2J\x07\r\x7f\x9b31m"  # what a terminal obeys
DEPTHS = (30, 32, 33, 1000, 100_000)  # of which the first is one that is taken


def text(**changed):
    return json.dumps({**RECORD, **changed}).encode()


def nested(depth, start=b'{"wavechain":"1.0.0","x":'):
    return start + b"[" * depth + b"]" * depth + b"}"


def with_field(part, key, value):
    return text(**{part: {**RECORD.get(part, {}), key: value}})


def spoiled_texts(value):
    """The same with sequences behind each text that a terminal obeys."""
    if isinstance(value, dict):
        return {key: spoiled_texts(member) for key, member in value.items()}
    if isinstance(value, list):
        return [spoiled_texts(member) for member in value]
    return value + ESCAPES if isinstance(value, str) else value


def records():
    good = text()
    cases = {
        "as_it_should_be": (good, "shown"), "indented": (json.dumps(RECORD, indent=2).encode(), "shown"), "unknown_member": (text(more=[1, {"a": None}]), "shown"), "nested_thirty_deep": (good[:-1] + b',"x":' + nested(30, b"")[:-1] + b"}", "shown"),
        "brackets_in_texts": (text(filters=['"\\' + "[{" * 100]), "shown"), "escape_sequences": (text(filters=["\x1b[2J\x07\x9b"]), "shown"), "zero_byte_in_a_filter": (text(filters=["Sine\0Filter"]), "shown"),
        "escape_sequences_everywhere": (json.dumps(spoiled_texts({**RECORD, "picture": PICTURE, "tracks": [{"name": "a", "filters": ["b"], "unit": "c"}]})).encode(), "shown"),
        "escape_sequences_in_raw_samples": (text(input={"file": "take.wav", "sha256": ESCAPES, "type": ESCAPES, "rate_hz": 8000}), "shown"), "member_twice": (good[:-1] + b',"filters":[]}', "shown"), "filters_as_tracks": (text(tracks=[{"name": "a", "filters": [], "unit": "mm"}]), "shown"),
        "empty": (b"", "refused"), "empty_object": (b"{}", "refused"), "an_array": (b"[" + good + b"]", "refused"), "nul_only": (bytes(1000), "refused"), "nul_first": (b"\0" + good, "refused"), "nul_in_a_text": (good.replace(b"Sine", b"Si\0ne"), "refused"),
        "latin_1": (good.replace(b"Sine", b"S\xefne"), "refused"), "overlong_utf8": (good.replace(b"Sine", b"\xc0\x80"), "refused"), "half_a_surrogate": (good.replace(b"Sine", b"\\ud800"), "refused"), "utf16": (good.decode().encode("utf-16"), "refused"),
        "real_overflowing": (good.replace(b"4096", b"1e400"), "refused"), "digits_without_end": (good.replace(b"4096", b"9" * 100_000), "refused"), "library_missing": (b'{"wavechain":"1.0.0"}', "refused"),
        "window_a_text": (text(picture={**PICTURE, "window_ms": "5"}), "refused"), "window_missing": (text(picture={}), "refused"), "picture_a_text": (text(picture="png"), "refused"),
    }
    for size in (1, 14, 30, len(good) // 2, len(good) - 1):
        cases[f"cut_at_{size}"] = (good[:size], "refused")
    for part, key, most in (("options", "seed", 2**32 - 1), ("options", "block", 2**31 - 1), ("input", "channel", 2**31 - 1)):
        cases[f"{key}_largest"] = (with_field(part, key, most), "shown")
        for name, value in (("too_large", most + 1), ("negative", -1), ("least_of_64_bits", -(2**63)), ("most_of_64_bits", 2**64 - 1), ("beyond_64_bits", 2**64), ("1e300", 1e300), ("a_fraction", 1.5), ("a_text", "7"), ("null", None)):
            cases[f"{key}_{name}"] = (with_field(part, key, value), "refused")
    for depth in DEPTHS[1:]:
        cases[f"nested_{depth}_deep"] = (nested(depth), "refused")
        cases[f"nested_{depth}_deep_without_end"] = (nested(depth)[: depth + 25], "refused")
    cases["objects_nested_deeply"] = (b'{"wavechain":' * 100_000, "refused")
    for key in ("wavechain", "library", "input", "filters", "files", "options", "output"):
        cases[f"{key}_a_number"] = (text(**{key: 7}), "refused")
        cases[f"{key}_null"] = (text(**{key: None}), "shown" if key == "files" else "refused")
    return cases


def chunk(kind, content):
    return struct.pack(">I", len(content)) + kind + content + struct.pack(">I", zlib.crc32(kind + content))


def pictures():
    """Records in pictures; of each picture what a reader of records looks at, no more. All are refused."""
    frame = b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", 1, 1, 8, 0, 0, 0, 0))
    for name, record in (("nested_deeply", nested(100_000)), ("cut", text()[:-9]), ("of_wrong_types", text(options=[])), ("nul", text().replace(b"wav", b"\0\0\0", 1)), ("latin_1", text().replace(b"Sine", b"\xe9"))):
        yield "png", name, frame + chunk(b"tEXt", b"Comment\0" + record)
        yield "svg", name, b'<?xml version="1.0"?>\n<svg >\n<metadata>' + record + b"</metadata>\n</svg>\n"
        yield "pdf", name, b"%PDF-1.5\n<< /Producer (x)\n   /Subject (" + record + b")\n>>\n"
    yield "png", "text_longer_than_the_file", frame + struct.pack(">I", 2**32 - 1) + b"tEXtComment\0" + text()
    yield "png", "text_of_an_odd_length", frame + struct.pack(">I", 3) + b"tEXtCom"
    yield "svg", "metadata_without_end", b"<svg ><metadata>" + text()
    yield "svg", "metadata_ends_before_it_starts", b"<svg ></metadata><metadata>" + text()
    yield "pdf", "subject_of_odd_digits", b"%PDF-1.5\n   /Subject <FEFF007B0>\n"
    yield "pdf", "subject_of_other_letters", b"%PDF-1.5\n   /Subject <FEFFzzzz\xff\xff\xff\xff>\n"
    yield "pdf", "subject_nested_deeply", b"%PDF-1.5\n   /Subject <FEFF" + nested(100_000).decode().encode("utf-16-be").hex().encode() + b">\n"


def manifests():
    line = b'{"input": "recording.wav"}\n'
    return {
        "nested_deeply": b'{"input":' * 100_000, "arrays_nested_deeply": nested(100_000, b'{"input":'), "nested_33_deep": nested(33, b'{"input":'), "nested_20_deep": nested(20, b'{"input":'), "a_table": b'{"input": {}}', "truth": b'{"input": true}',
        "real": b'{"channel": 1.5, "input": "recording.wav"}', "real_huge": b'{"input": 1e300}', "real_overflowing": b'{"input": 1e400}', "number_for_a_column": b'{"1e300": 7}', "channel_huge": b'{"input": "recording.wav", "channel": 18446744073709551615}',
        "channel_negative": b'{"input": "recording.wav", "channel": -9223372036854775808}', "zero_byte_in_json": b'{"input": "recording.wav\\u0000"}', "zero_byte_raw": b'{"input": "recording.wav\0"}', "cut": line + line[:-3], "cut_in_a_text": line[:15],
        "latin_1": b'{"input": "\xe9.wav"}', "overlong_utf8": b'{"input": "\xc0\x80"}', "half_a_surrogate": b'{"input": "\\ud800"}', "utf16": line.decode().encode("utf-16"), "array": b"[" + line + b"]", "two_in_a_line": line[:-1] + line, "input_null": b'{"input": null}',
        "column_unknown": b'{"\\u001b[2J": "x", "input": "recording.wav"}', "nul_only": bytes(1000), "nul_in_a_row": b"input\nrecording.wav\0\n", "nul_in_the_head": b"inp\0ut\nrecording.wav\n", "quote_open": b'input\n"recording.wav\n', "quotes_alone": b'"' * 1001,
        "cells_many": b"input\n" + b"," * 100_000, "columns_many": b",".join(b"c%d" % i for i in range(1000)) + b"\n" + b"," * 999, "breaks_alone": b"\r\n" * 1000, "random_bytes": bytes(range(255, 0, -1)) * 20,
    }
