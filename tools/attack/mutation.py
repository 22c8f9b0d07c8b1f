"""Mutations of bytes and of texts, for all formats alike, and of the chunks that several formats are made of."""

import re
import struct
import zlib

NUMBERS = (0, 1, -1, 2, 127, 128, 255, 256, 32767, 32768, 65535, 65536, 2**24, 2**31 - 1, -2**31, 2**32 - 1, 2**32,
           2**63 - 1, 2**64 - 1)
WORDS = ("0", "-1", "1", "2147483647", "-2147483648", "4294967296", "1e308", "-1e308", "1e-320", "nan", "inf", "-inf",
         "1e400", "0x10", "", "99999999999999999999", "3.5", "\"", "\\", "{", "}", "[", "]", "<", ">", "/", "\0",
         "\x1b[31m", "%s%n", "é", "x" * 300)
MOST_TEXT = 4 << 20  # bytes to which a text may grow by repeating parts of it: several changes multiply
HEADER = 160  # bytes at the start that are changed more often than others


def place(rng, data):
    """A position in the data, more often near its start."""
    return rng.randrange(min(len(data), HEADER) if rng.random() < 0.25 else len(data))


def set_number(rng, data):
    """Overwrites an integer or a float with an extreme one."""
    at = place(rng, data)
    if rng.random() < 0.2:
        new = struct.pack(rng.choice("<>") + "f", rng.choice((0, -1, 1e30, -1e30, 1e-40, float("nan"), float("inf"))))
    else:
        size = rng.choice((1, 2, 4, 8))
        value = rng.choice(NUMBERS) & ((1 << 8 * size) - 1)
        new = value.to_bytes(size, rng.choice(("little", "big")))
    data[at : at + len(new)] = new


def flip_bits(rng, data):
    """Changes single bits."""
    for _ in range(rng.choice((1, 1, 2, 5, 20))):
        data[place(rng, data)] ^= 1 << rng.randrange(8)


def truncate(rng, data):
    """Cuts the end off."""
    del data[place(rng, data) :]


def remove(rng, data):
    """Removes a piece."""
    at = place(rng, data)
    del data[at : at + rng.choice((1, 2, 4, 16, 100))]


def repeat(rng, data):
    """Repeats a piece, a few times or many."""
    at = place(rng, data)
    data[at:at] = data[at : at + rng.choice((1, 4, 16, 100))] * rng.choice((1, 1, 2, 50))


def insert(rng, data):
    """Inserts bytes."""
    at = place(rng, data)
    data[at:at] = rng.randbytes(rng.choice((1, 2, 4, 16)))


def move(rng, data):
    """Copies a piece over another."""
    size = rng.choice((2, 4, 8, 32))
    source, target = place(rng, data), place(rng, data)
    data[target : target + size] = data[source : source + size]


BYTES = (set_number, set_number, set_number, flip_bits, flip_bits, truncate, remove, repeat, insert, move)


def mutate_bytes(rng, data):
    """Changes the data in one to four places, whatever they mean."""
    data = bytearray(data)
    for _ in range(rng.choice((1, 1, 1, 2, 4))):
        if data:
            rng.choice(BYTES)(rng, data)
    return bytes(data)


TOKEN = re.compile(rb"-?[0-9]+(?:\.[0-9]*)?(?:[eE][-+]?[0-9]+)?|[A-Za-z_]+")


def mutate_text(rng, data):
    """Changes numbers, words and lines of a text, or any bytes of it."""
    for _ in range(rng.choice((1, 1, 2, 3))):
        choice = rng.random()
        if choice < 0.55:
            data = replace_token(rng, data)
        elif choice < 0.85:
            data = change_lines(rng, data)
        else:
            data = mutate_bytes(rng, data)
    return data


def replace_token(rng, data):
    """Replaces a number or a word, more often near the start, by another of the text or by an extreme one."""
    tokens = list(TOKEN.finditer(data))
    if not tokens:
        return data
    one = rng.choice(tokens[:20] if rng.random() < 0.2 else tokens)
    new = rng.choice(tokens)[0] if rng.random() < 0.3 else rng.choice(WORDS).encode()
    return data[: one.start()] + new + data[one.end() :]


def change_lines(rng, data):
    """Removes, repeats, exchanges or joins lines."""
    lines = data.splitlines(keepends=True)
    if not lines:
        return data
    at = rng.randrange(len(lines))
    action = rng.randrange(4)
    if action == 0:
        del lines[at : at + rng.choice((1, 1, 3, 20))]
    elif action == 1:
        times = rng.choice((1, 2, 100, 1000))
        if len(data) + len(lines[at]) * times <= MOST_TEXT:
            lines[at:at] = [lines[at]] * times
    elif action == 2:
        other = rng.randrange(len(lines))
        lines[at], lines[other] = lines[other], lines[at]
    else:
        lines[at] = lines[at].rstrip(b"\r\n") + b" "
    return b"".join(lines)


def change_list(rng, pieces, others):
    """Removes, repeats, exchanges or borrows pieces of a list, in place."""
    if not pieces:
        return
    at = rng.randrange(len(pieces))
    action = rng.randrange(4)
    if action == 0:
        del pieces[at]
    elif action == 1:
        pieces[at:at] = [pieces[at]] * rng.choice((1, 2, 30))
    elif action == 2:
        other = rng.randrange(len(pieces))
        pieces[at], pieces[other] = pieces[other], pieces[at]
    elif others:
        pieces.insert(at, rng.choice(others))


# ---- LightWave's objects: chunks with sizes of 4 bytes, in surfaces of 2 bytes ----


def read_chunks(data, size_bytes):
    """The chunks of the data, as pairs of identifier and contents; None if it is not made of chunks only."""
    chunks, at = [], 0
    while at < len(data):
        end = at + 4 + size_bytes
        if end > len(data) or not all(32 <= byte < 127 for byte in data[at : at + 4]):
            return None
        size = int.from_bytes(data[at + 4 : end], "big")
        if end + size > len(data):
            return None
        chunks.append((data[at : at + 4], data[end : end + size]))
        at = end + size + size % 2
    return chunks


def write_chunks(rng, chunks, size_bytes):
    """The bytes of chunks. Now and then a size is wrong."""
    out = b""
    for name, contents in chunks:
        size = len(contents)
        if rng.random() < 0.02:
            size = rng.choice((0, size + 1, size - 1, size * 2, rng.choice(NUMBERS)))
        out += name + (size & ((1 << 8 * size_bytes) - 1)).to_bytes(size_bytes, "big") + contents
        out += b"\0" * (len(contents) % 2)
    return out


def inner_start(name, contents):
    """Where the chunks inside a chunk start: after the type of a form, or the two names of a surface."""
    if name == b"FORM":
        return 4
    at = 0
    for _ in range(2 if name == b"SURF" else 0):
        end = contents.find(b"\0", at) + 1
        at = end + end % 2
    return at


def mutate_chunk(rng, name, contents):
    """Changes the contents of a chunk: the chunks inside, where there are some, else its bytes."""
    start = inner_start(name, contents)
    for size_bytes in (4, 2):
        inner = read_chunks(contents[start:], size_bytes)
        if inner and rng.random() < 0.85:
            return contents[:start] + write_chunks(rng, mutate_chunks(rng, inner, []), size_bytes)
    return mutate_bytes(rng, contents) if contents else rng.randbytes(2)


def mutate_chunks(rng, chunks, others):
    """Changes one chunk, or the list of them."""
    chunks = list(chunks)
    if rng.random() < 0.25:
        change_list(rng, chunks, others)
    elif chunks:
        at = rng.randrange(len(chunks))
        name, contents = chunks[at]
        if rng.random() < 0.1:
            name = rng.choice(others or chunks)[0]
        chunks[at] = (name, mutate_chunk(rng, name, contents))
    return chunks


def mutate_iff(rng, data, other):
    """Changes an IFF file by its chunks; `other` is a second file, to borrow chunks from."""
    form = data[8:12]
    chunks = read_chunks(data[12:], 4)
    if chunks is None:
        return mutate_bytes(rng, data)
    borrowed = read_chunks(other[12:], 4) or []
    for _ in range(rng.choice((1, 1, 2, 3))):
        chunks = mutate_chunks(rng, chunks, borrowed)
    body = form + write_chunks(rng, chunks, 4)
    size = len(body) if rng.random() < 0.95 else rng.choice(NUMBERS) & 0xFFFFFFFF
    return data[:4] + size.to_bytes(4, "big") + body


# ---- PNG, whose chunks have checksums ----


def mutate_png(rng, data, other):
    """Changes a PNG file by its chunks, with right checksums."""
    chunks = png_chunks(data)
    if rng.random() < 0.3:
        change_list(rng, chunks, png_chunks(other))
    elif chunks:
        at = rng.randrange(len(chunks))
        name, contents = chunks[at]
        if name == b"IDAT" and rng.random() < 0.6:
            contents = zlib.compress(mutate_bytes(rng, inflate(contents)))
        else:
            contents = mutate_bytes(rng, contents) if contents else rng.randbytes(3)
        chunks[at] = (name, contents)
    out = data[:8]
    for name, contents in chunks:
        out += struct.pack(">I", len(contents)) + name + contents + struct.pack(">I", zlib.crc32(name + contents))
    return out


def png_chunks(data):
    """The chunks of a PNG file, as pairs of name and contents."""
    chunks, at = [], 8
    while at + 12 <= len(data):
        size = int.from_bytes(data[at : at + 4], "big")
        chunks.append((data[at + 4 : at + 8], data[at + 8 : at + 8 + size]))
        at += size + 12
    return chunks


def inflate(data):
    """The unpacked data; empty if it is only a part of some."""
    try:
        return zlib.decompress(data)
    except zlib.error:
        return b""
