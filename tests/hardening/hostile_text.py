"""Text files with one thing wrong, or merely unusual, in each; the name of a case tells what.

Every format has eight good lines. A case says how many of them are read, and what the rest amounts to.
"""

import dataclasses
import os
import random
import socket

GOOD_LINES = 8
BAD = 4  # index of the line that is spoiled
MILLION = 1_000_000


@dataclasses.dataclass
class Format:
    """One kind of text file: what it is read by, and its good lines as lists of numbers."""

    filter_text: str  # {} is the file, {xyd} and {pal} are good ones
    counted: str  # what the report counts
    lines: list


FORMATS = {
    "xyd": Format(
        "BeamData mode=distance_3_4 data={} palate={pal}",
        "record",
        [[1000 * k if i == 0 else (i * 37 + k * 11) % 201 - 100 for k in range(16)] for i in range(GOOD_LINES)],
    ),
    "pal": Format("BeamData mode=palate data={xyd} palate={}", "point", [[500 * i, 3000 - i * i] for i in range(GOOD_LINES)]),
    "gpl": Format("GlotSyn events={}", "event", [[20 * i + 20, 0.5, 0.6, 0.1, 0.3, -0.2] for i in range(GOOD_LINES)]),
    "fla": Format("FricSyn events={}", "event", [[20 * i + 20, 0.5, 0.3, -0.2] for i in range(GOOD_LINES)]),
    "gpm": Format("PulseSyn events={}", "event", [[20 * i + 20, 0.5] for i in range(GOOD_LINES)]),
}
NEEDED = {"xyd": 16, "pal": 2, "gpl": 4, "fla": 2, "gpm": 2}


@dataclasses.dataclass
class Case:
    """What is put at a path, and what has to come of it."""

    make: object  # called with the path
    usable: int  # lines that are read; none: the file is refused
    same_as: bytes = None  # the usable lines as a plain file has them, where they are not the first good ones (no file, for none)
    fault: dict = None  # of the system, while the program reads it
    says: str = None  # words of the message
    changes: bool = False  # the file changes while it is read: the program notices
    big: bool = False


def text_of(lines):
    return "".join(" ".join(str(number) for number in line) + "\n" for line in lines).encode()


def holding(content):
    return lambda path: path.write_bytes(content)


def linking(target):
    return lambda path: path.symlink_to(target)


def contents(kind):
    """Cases of content: name -> Case."""
    lines = FORMATS[kind].lines
    good = text_of(lines)
    rows = good.splitlines(keepends=True)
    bad_row = rows[BAD].rstrip(b"\n")
    numbers = bad_row.split()

    def with_row(row):
        return b"".join(rows[:BAD]) + row + b"\n" + b"".join(rows[BAD + 1 :])

    def ends(row, readable=b""):
        """The data end at the spoiled line, of which a first number can be read: to a glottal pulse it is the next one's instant."""
        return Case(holding(with_row(row)), BAD, b"".join(rows[:BAD]) + readable + b"\n")

    def refused(content, says=None):
        return Case(holding(content), 0, b"", says=says)

    def whole(content, same_as=None):
        return Case(holding(content), GOOD_LINES, same_as)

    def first(text):
        return b" ".join([text] + numbers[1:])

    def valued(written, value):
        """The first number of the spoiled line written in another way."""
        return whole(with_row(first(written)), with_row(first(value)))

    def second(text):
        return b" ".join([numbers[0], text] + numbers[2:])

    def seconded(written, value):
        return whole(with_row(second(written)), with_row(second(value)))

    noise = random.Random(7)
    cases = {
        "as_it_should_be": whole(good),
        "empty": refused(b"", "it is empty"),
        "one_newline": refused(b"\n"),
        "thousand_blank_lines": refused(b"\n" * 1000),
        "one_blank": refused(b" "),
        "no_last_newline": whole(good[:-1]),
        "cr_lf": whole(good.replace(b"\n", b"\r\n")),
        "cr_lf_no_last": whole(good.replace(b"\n", b"\r\n")[:-2]),
        "cr_alone": Case(holding(good.replace(b"\n", b"\r")), 1, good.replace(b"\n", b" ") + b"\n"),
        "lf_cr": whole(good.replace(b"\n", b"\n\r")),
        "nul_in_a_line": ends(bad_row[:1] + b"\0" + bad_row[1:], bad_row[:1]),
        "nul_line": ends(b"\0"),
        "nul_first": refused(b"\0" + good),
        "nul_last": whole(good + b"\0"),
        "nul_block_last": whole(good + bytes(4096)),
        "nul_only": refused(bytes(4096)),
        "bom": refused(b"\xef\xbb\xbf" + good),
        "bom_only": refused(b"\xef\xbb\xbf"),
        "bom_in_a_line": ends(b"\xef\xbb\xbf" + bad_row),
        "utf16_little_with_bom": refused(b"\xff\xfe" + good.decode().encode("utf-16-le")),
        "utf16_big_with_bom": refused(b"\xfe\xff" + good.decode().encode("utf-16-be")),
        "utf16_little": refused(good.decode().encode("utf-16-le")),
        "utf16_big": refused(good.decode().encode("utf-16-be")),
        "utf32": refused(good.decode().encode("utf-32")),
        "overflowing": ends(first(b"1e400")),
        "overflowing_below": ends(first(b"-1e400")),
        "overflowing_digits": ends(first(b"1" + b"0" * 400)),
        "overflowing_exponent": ends(first(b"1e99999999999999999999")),
        "largest_double": Case(holding(with_row(second(b"1.7976931348623157e308"))), GOOD_LINES, with_row(second(b"1.7976931348623157e308"))),
        "lowest_double": Case(holding(with_row(second(b"-1.7976931348623157e308"))), GOOD_LINES, with_row(second(b"-1.7976931348623157e308"))),
        "beyond_32_bits": Case(holding(with_row(first(b"4294967297"))), GOOD_LINES, with_row(first(b"4294967297"))),
        "beyond_64_bits": Case(holding(with_row(first(b"18446744073709551617"))), GOOD_LINES, with_row(first(b"18446744073709551617"))),
        "denormal": seconded(b"4.9e-324", b"0"),
        "denormal_below": seconded(b"-4.9e-324", b"-0"),
        "vanishing_exponent": seconded(b"1e-99999999999999999999", b"0"),
        "minus_zero": seconded(b"-0.000", b"-0"),
        "hexadecimal": ends(first(b"0x14"), b"0"),
        "hexadecimal_float": ends(first(b"0x1.8p3"), b"0"),
        "octal_look": valued(b"0" * 50 + numbers[0], numbers[0]),
        "comma_decimal": ends(first(b"100,5"), b"100"),
        "commas_between": ends(bad_row.replace(b" ", b","), numbers[0]),
        "semicolons_between": ends(bad_row.replace(b" ", b";"), numbers[0]),
        "underscores": ends(first(b"1_00"), b"1"),
        "apostrophes": ends(first(b"1'00"), b"1"),
        "words": ends(b"one two three"),
        "word_behind": ends(first(numbers[0] + b"ms"), numbers[0]),
        "word_header": refused(b"time amplitude\n" + good),
        "comment_header": refused(b"# made by hand\n" + good),
        "comment": ends(b"# " + bad_row),
        "comment_slashes": ends(b"// " + bad_row),
        "infinity": ends(first(b"inf")),
        "infinity_long": ends(first(b"-Infinity")),
        "not_a_number": ends(first(b"nan")),
        "quoted": ends(b'"' + numbers[0] + b'" ' + b" ".join(numbers[1:])),
        "plus_signs": whole(with_row(first(b"+" + numbers[0]))),
        "two_signs": ends(first(b"--1")),
        "sign_apart": ends(first(b"- 1")),
        "sign_alone": ends(first(b"-")),
        "point_alone": ends(first(b".")),
        "exponent_without_digits": ends(first(b"1e")),
        "exponent_capital": valued(numbers[0] + b"E+0", numbers[0]),
        "point_last": valued(numbers[0] + b".", numbers[0]),
        "arabic_digits": ends(first("١٠٠".encode())),
        "minus_of_print": ends(first("−100".encode())),
        "no_break_spaces": ends(bad_row.replace(b" ", b"\xc2\xa0")),
        "latin_1": ends(first(b"100\xb5")),
        "escape_sequence": ends(b"\x1b[2J" + bad_row),
        "tabs": whole(good.replace(b" ", b"\t")),
        "other_white_space": whole(good.replace(b" ", b"\v\f ")),
        "leading_blanks": whole(b"".join(b"  \t " + row for row in rows)),
        "trailing_blanks": whole(good.replace(b"\n", b"  \n")),
        "blank_first_line": refused(b"\n" + good),
        "blank_line": ends(b""),
        "line_of_blanks": ends(b" \t "),
        "blank_last_lines": whole(good + b"\n\n\n"),
        "too_few_numbers": ends(b" ".join(numbers[: NEEDED[kind] - 1])),
        "one_line": Case(holding(rows[0]), 1),
        "one_number": refused(b"1"),
        "long_number": valued(b"0" * 100_000 + numbers[0], numbers[0]),
        "long_fraction": valued(numbers[0] + b"." + b"0" * 100_000, numbers[0]),
        "cut_in_last_line": Case(holding(good[: -1 - len(b" ".join(rows[-1].split()[NEEDED[kind] - 1 :])) - 1]), GOOD_LINES - 1),
        "cut_in_first_line": refused(rows[0].split(b" ")[0]),
        "random_bytes": refused(b"\xff" + noise.randbytes(5000)),
        "sound_instead": refused(b"RIFF\x24\x00\x00\x00WAVEfmt " + bytes(40)),
        "compressed_instead": refused(b"\x1f\x8b\x08" + noise.randbytes(500)),
        "web_page_instead": refused(b"<!DOCTYPE html>\n<title>404 Not Found</title>\n"),
        "hole_of_a_megabyte": Case(lambda path: make_hole(path, 1 << 20), 0, b""),
        "numbers_too_many": Case(holding(with_row(bad_row + b" 0" * 5000)), GOOD_LINES, with_row(bad_row + b" 0" * 5000)),
        "ten_megabytes_of_blanks_in_a_line": dataclasses.replace(whole(with_row(bad_row + b" " * 10_000_000)), big=True),
        "ten_megabytes_of_digits_in_a_line": dataclasses.replace(ends(b"7" * 10_000_000), big=True),
        "ten_megabytes_without_a_line": dataclasses.replace(refused(b"x" * 10_000_000), big=True),
        "million_lines": Case(holding(million_lines(kind)), min(MILLION, 4096) if kind == "pal" else MILLION, million_lines(kind), big=True),
    }
    return cases


def million_lines(kind):
    if kind == "xyd":
        return text_of(FORMATS[kind].lines[:1]) + b"0 0 0 0 0 1 0 -1 0 0 0 0 0 0 0 0\n" * (MILLION - 1)
    rest = b" " + text_of([FORMATS[kind].lines[0][1:]])
    return b"".join(b"%d%s" % (20 * i + 20, rest) for i in range(MILLION))


def make_hole(path, size):
    with open(path, "wb") as file:
        file.truncate(size)


def make_socket(path):
    with socket.socket(socket.AF_UNIX) as made:
        made.bind(os.path.relpath(path))


def make_locked_folder(path, content):
    folder = path.with_name(path.name + ".d")
    folder.mkdir()
    (folder / "file").write_bytes(content)
    path.symlink_to(folder / "file")
    folder.chmod(0)


def make_locked(path, content):
    path.write_bytes(content)
    path.chmod(0)


def make_link_chain(path, content):
    path.with_name(path.name + ".0").write_bytes(content)
    for i in range(1, 10):
        path.with_name(f"{path.name}.{i}").symlink_to(path.with_name(f"{path.name}.{i - 1}"))
    path.symlink_to(path.with_name(path.name + ".9"))


def make_loop(path):
    path.with_name(path.name + ".loop").symlink_to(path)
    path.symlink_to(path.with_name(path.name + ".loop"))


def make_endless_links(path, content):
    """More links than the system follows."""
    path.with_name(path.name + ".0").write_bytes(content)
    for i in range(1, 60):
        path.with_name(f"{path.name}.{i}").symlink_to(path.with_name(f"{path.name}.{i - 1}"))
    path.symlink_to(path.with_name(path.name + ".59"))


def kinds(good, usable):
    """Cases of what stands under the name, for any format: name -> Case."""

    def refused(make, says):
        return Case(make, 0, says=says)

    return {
        "missing": refused(lambda path: None, "there is no such file"),
        "missing_folder": refused(linking("/nowhere/at/all"), "there is no such file"),
        "directory": refused(lambda path: path.mkdir(), "it is a folder"),
        "fifo": refused(os.mkfifo, "no regular file"),
        "socket": refused(make_socket, "no regular file"),
        "dev_zero": refused(linking("/dev/zero"), "no regular file"),
        "dev_full": refused(linking("/dev/full"), "no regular file"),
        "dev_null": refused(linking("/dev/null"), "no regular file"),
        "dev_tty": refused(linking("/dev/tty"), "no regular file"),
        "dev_urandom": refused(linking("/dev/urandom"), "no regular file"),
        "proc_mem": Case(linking("/proc/self/mem"), 0, b""),
        "link_dangling": refused(linking("nothing"), "there is no such file"),
        "link_to_itself": refused(lambda path: path.symlink_to(path), "symbolic links"),
        "links_in_a_loop": refused(make_loop, "symbolic links"),
        "links_without_end": refused(lambda path: make_endless_links(path, good), "symbolic links"),
        "link_to_directory": refused(linking("."), "it is a folder"),
        "links_in_a_chain": Case(lambda path: make_link_chain(path, good), usable),
        "link_name_too_long": refused(linking("x" * 300), None),
        "unreadable": refused(lambda path: make_locked(path, good), "Permission denied"),
        "in_an_unreadable_folder": refused(lambda path: make_locked_folder(path, good), "Permission denied"),
    }


def changing(kind):
    """Cases of text files that change while the program reads them."""
    lines = FORMATS[kind].lines
    good = text_of(lines)
    more = text_of([[1000 + lines[-1][0]] + lines[-1][1:]]).decode()

    def case(call, after=0):
        return Case(holding(good), GOOD_LINES, fault={"call": call, "after": after, "text": more}, changes=True)

    return {"grows_while_read": case("grow"), "vanishes_while_read": case("vanish", 1), "is_emptied_while_read": case("cut", 1)}
