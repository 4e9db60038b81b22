"""Chain files with one thing wrong, or merely unusual, in each: name -> (content, verdict).

The verdict is "runs", "refused" (with the file's name and, where it can be read at all, line and column), or words that the message
must hold beside that.
"""

GOOD = b'[[filter]]\nkind = "FIRNotch"\nhalf_length = 20\nfrequency = 2500\n\n[[filter]]\nkind = "SineFilter"\namplitude = 0.25\n'


def with_value(text):
    return GOOD.replace(b"0.25", text)


def chains():
    text = GOOD.decode()
    return {
        "as_it_should_be": (GOOD, "runs"), "empty": (b"", "holds no filter"), "blank_lines": (b"\n\n\n", "holds no filter"), "comment_alone": (b"# later", "holds no filter"),
        "no_last_newline": (GOOD[:-1], "runs"), "cr_lf": (GOOD.replace(b"\n", b"\r\n"), "runs"), "cr_alone": (GOOD.replace(b"\n", b"\r"), "refused"),
        "tabs": (GOOD.replace(b" ", b"\t"), "runs"), "indented": (GOOD.replace(b"\n", b"\n  "), "runs"), "bom": (b"\xef\xbb\xbf" + GOOD, "runs"),
        "bom_only": (b"\xef\xbb\xbf", "holds no filter"), "bom_in_the_middle": (GOOD.replace(b"kind", b"\xef\xbb\xbfkind", 1), "refused"),
        "utf16_little_with_bom": (b"\xff\xfe" + text.encode("utf-16-le"), "refused"), "utf16_big_with_bom": (b"\xfe\xff" + text.encode("utf-16-be"), "refused"),
        "utf16": (text.encode("utf-16-le"), "refused"), "utf32": (text.encode("utf-32"), "refused"), "latin_1": (GOOD + b"# \xe9\n", "refused"), "overlong_utf8": (GOOD + b"# \xc0\x80\n", "refused"),
        "surrogate": (GOOD + b"# \xed\xa0\x80\n", "refused"), "nul_in_a_line": (GOOD.replace(b"half", b"ha\0lf"), "refused"), "nul_in_a_comment": (GOOD + b"# \0\n", "refused"),
        "nul_in_a_text": (GOOD.replace(b"FIRNotch", b"FIR\\u0000Notch"), "zero byte"), "nul_last": (GOOD + b"\0", "refused"), "nul_only": (bytes(100), "refused"),
        "control_character": (GOOD + b"# \x07\n", "refused"), "delete_character": (GOOD + b"# \x7f\n", "refused"), "escape_sequence_in_a_name": (GOOD.replace(b"FIRNotch", b"\\u001b[2J"), "refused"),
        "overflowing_integer": (with_value(b"99999999999999999999999"), "refused"), "overflowing_real": (with_value(b"1e400"), "refused"), "denormal": (with_value(b"4.9e-324"), "runs"),
        "hexadecimal": (with_value(b"0x10"), "runs"), "octal": (with_value(b"0o7"), "runs"), "leading_zero": (with_value(b"07"), "refused"), "underscores": (with_value(b"1_0"), "runs"),
        "decimal_comma": (with_value(b"0,25"), "refused"), "point_first": (with_value(b".25"), "refused"), "point_last": (with_value(b"1."), "refused"), "word": (with_value(b"loud"), "refused"),
        "no_value": (with_value(b""), "refused"), "infinity": (with_value(b"inf"), "refused"), "not_a_number": (with_value(b"nan"), "refused"), "date": (with_value(b"2020-01-01"), "refused"),
        "truth": (with_value(b"true"), "refused"), "array": (with_value(b"[1, 2]"), "refused"), "table": (with_value(b"{a = 1}"), "refused"), "text": (with_value(b'"quarter"'), "refused"),
        "quote_open": (GOOD.replace(b'Notch"', b"Notch"), "refused"), "bracket_open": (GOOD.replace(b"[[filter]]", b"[[filter]", 1), "refused"), "single_brackets": (GOOD.replace(b"[[filter]]", b"[filter]", 1), "refused"),
        "key_twice": (GOOD + b"amplitude = 1\n", "refused"), "key_unknown": (GOOD + b"loudness = 1\n", "loudness"), "table_unknown": (GOOD + b"[[filters]]\n", "filters"), "kind_unknown": (GOOD.replace(b"FIRNotch", b"FIRNot"), "FIRNot"),
        "kind_missing": (GOOD + b"[[filter]]\n", "kind"), "kind_a_number": (GOOD.replace(b'"FIRNotch"', b"7"), "refused"), "kind_empty": (GOOD.replace(b"FIRNotch", b""), "refused"),
        "kind_very_long": (GOOD.replace(b"FIRNotch", b"F" * 500_000), "refused"), "filter_a_number": (b"filter = 7\n", "refused"), "filter_an_array_of_numbers": (b"filter = [1, 2]\n", "refused"),
        "arrays_nested_deeply": (b"filter = " + b"[" * 200_000, "refused"), "tables_nested_deeply": (b"a" + b".a" * 200_000 + b" = 1\n", ".toml:1:66: a name has more dots than any in a chain"),
        "table_of_deep_name": (GOOD + b"# \xc3\xa4\n[ '\xc3\xa4'" + b".a" * 33 + b"]\n", ".toml:10:70: a name has more dots"), "deep_names_in_deep_tables": (b"filter = " + (b"{a" + b".a" * 32 + b" = [\n") * 2000, "refused"),
        "dots_of_many_numbers": (b"filter = [" + b'{kind="SineFilter", frequency=100.5, amplitude=0.001}, ' * 40 + b"]\n", "runs"), "dots_in_texts_and_comments": (GOOD + b"# " + b"." * 500 + b"\n", "runs"),
        "dots_in_a_long_text": (GOOD.replace(b'"SineFilter"', b'"""Sine' + b"." * 500 + b'"""'), "no filter"), "inline_tables_nested_deeply": (b"filter = " + b"{a = " * 100_000, "refused"),
        "thousand_filters": (b'[[filter]]\nkind = "SquareFilter"\n' * 1000, "runs"), "cut_in_a_text": (GOOD[:25], "refused"), "cut_in_a_bracket": (GOOD[:9], "refused"), "random_bytes": (bytes(range(255, 0, -1)) * 20, "refused"),
        "sound_instead": (b"RIFF\x24\0\0\0WAVEfmt " + bytes(40), "refused"), "json_instead": (b'{"filter": []}', "refused"), "ten_megabytes_in_a_line": (b"#" + b" " * 10_000_000, "larger than 1 MiB"),
        "million_lines": (b"\n" * 1_100_000, "larger than 1 MiB"), "hole": (bytes(1 << 20), "refused"), "line_of_half_a_megabyte": (b"#" + b"x" * 500_000 + b"\n" + GOOD, "runs"),
    }
