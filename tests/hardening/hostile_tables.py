"""Tables as `wavechain diff` reads them with one thing wrong, or merely unusual, in each: name -> (content, verdict).

The verdict is "same" (as the good one), "differs", "refused", or "either" of the latter two where nothing says more.
"""

ROWS = [b"%.9f,%d.5" % (i / 16000, i % 7) for i in range(100)]
GOOD = b"time_s,value\n" + b"\n".join(ROWS) + b"\n"


def tables():
    def with_row(row):
        return GOOD.replace(ROWS[50], row, 1)

    time, value = ROWS[50].split(b",")
    return {
        "as_it_should_be": (GOOD, "same"), "empty": (b"", "refused"), "header_alone": (b"time_s,value\n", "differs"), "no_last_newline": (GOOD[:-1], "same"), "cr_lf": (GOOD.replace(b"\n", b"\r\n"), "same"),
        "nul_in_a_row": (with_row(time + b",1\0"), "refused"), "nul_only": (bytes(4096), "either"), "bom": (b"\xef\xbb\xbf" + GOOD, "refused"), "utf16": (GOOD.decode().encode("utf-16"), "refused"),
        "overflowing": (with_row(time + b",1e400"), "refused"), "overflowing_single": (with_row(time + b",1e39"), "refused"), "denormal": (with_row(time + b",1e-45"), "differs"), "hexadecimal": (with_row(time + b",0x10"), "refused"),
        "decimal_comma": (with_row(time + b",1,5"), "refused"), "semicolons": (GOOD.replace(b",", b";"), "refused"), "word": (with_row(time + b",loud"), "refused"), "value_missing": (with_row(time + b","), "differs"),
        "cell_missing": (with_row(time), "refused"), "cell_too_many": (with_row(ROWS[50] + b",1"), "refused"), "blank_row": (with_row(b""), "refused"), "quoted": (with_row(time + b',"1.5"'), "refused"), "not_a_number": (with_row(time + b",nan"), "either"),
        "infinity": (with_row(time + b",inf"), "either"), "time_a_word": (GOOD.replace(ROWS[0], b"now,0.5", 1), "refused"), "time_twice": (GOOD.replace(ROWS[1], ROWS[0], 1), "either"), "cut_in_a_row": (GOOD[:-8], "either"),
        "ten_megabytes_in_a_line": (with_row(time + b"," + b"7" * 10_000_000), "refused"), "million_lines": (b"time_s,value\n" + b"0,1\n" * 1_000_000, "differs"), "ten_thousand_columns": (b"time_s" + b",v" * 10_000 + b"\n0" + b",1" * 10_000 + b"\n", "differs"),
        "random_bytes": (bytes(range(1, 256)) * 50, "either"),
    }
