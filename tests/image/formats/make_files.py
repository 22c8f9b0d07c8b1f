#!/usr/bin/env python3
"""Writes the image files of this directory, and expected.txt with their pixels.

The files are written and their pixels read without the libraries that the stand-alone host uses: by Pillow (Debian's
python3-pil), or byte by byte here where Pillow does not write the format. Run it in this directory after adding a file.

A line of expected.txt is: file, width, height, channels (1 grey, 2 grey and alpha, 3 colour, 4 colour and alpha),
whether the numbers are light (1) or display values (0), and the numbers of all pixels, rows from the top.
"""

import struct

from PIL import Image

WIDTH, HEIGHT = 3, 2
# Red, green, blue, alpha; 0 to 255, and alpha is not 0, so that no program changes the colours.
PIXELS = [
    (255, 0, 0, 255), (0, 128, 0, 255), (0, 0, 64, 128),
    (200, 100, 50, 64), (16, 32, 48, 255), (255, 255, 255, 255),
]
lines = []


def expect(name, channels, light, pixels):
    numbers = " ".join(f"{number:.9g}" for pixel in pixels for number in pixel)
    lines.append(f"{name} {WIDTH} {HEIGHT} {channels} {int(light)} {numbers}\n")


def scaled(pixels, most=255):
    return [tuple(number / most for number in pixel) for pixel in pixels]


def picture(mode):
    image = Image.new("RGBA", (WIDTH, HEIGHT))
    image.putdata(PIXELS)
    return image.convert(mode)


def write(name, mode, **options):
    """Writes a picture with Pillow, and reads it again as what the file holds."""
    picture(mode).save(name, **options)
    with Image.open(name) as image:
        has_alpha = "A" in image.getbands() or "transparency" in image.info
        is_grey = image.mode in ("1", "L", "LA")
        found = image.convert(("LA" if has_alpha else "L") if is_grey else ("RGBA" if has_alpha else "RGB"))
        pixels = [pixel if isinstance(pixel, tuple) else (pixel,) for pixel in found.getdata()]
        expect(name, len(pixels[0]), False, scaled(pixels))


def write_with_pillow():
    for mode in ("L", "LA", "RGB", "RGBA", "P", "1"):
        write(f"{mode.lower()}.png", mode)
    for mode in ("L", "RGB"):
        write(f"{mode.lower()}.jpg", mode, quality=95, subsampling=0)
    for mode in ("L", "RGB", "RGBA"):
        write(f"{mode.lower()}.tif", mode)
    write("lzw.tif", "RGB", compression="tiff_lzw")
    for mode in ("L", "RGB", "P"):
        write(f"{mode.lower()}.bmp", mode)
    for mode in ("L", "RGB", "RGBA"):
        write(f"{mode.lower()}.tga", mode)
    write("packed.tga", "RGB", compression="tga_rle")
    image = picture("RGB").quantize(8)
    image.save("opaque.gif")
    image.save("transparent.gif", transparency=image.getpixel((1, 0)))
    opaque = list(image.convert("RGB").getdata())
    # The library's GIF reader always gives alpha; a transparent pixel has no colour.
    expect("opaque.gif", 4, False, scaled([pixel + (255,) for pixel in opaque]))
    expect("transparent.gif", 4, False,
           scaled([(0, 0, 0, 0) if i == 1 else pixel + (255,) for i, pixel in enumerate(opaque)]))
    wide = Image.new("I;16", (WIDTH, HEIGHT))
    numbers = [0, 1000, 20000, 40000, 65534, 65535]
    for i, number in enumerate(numbers):
        wide.putpixel((i % WIDTH, i // WIDTH), number)
    for name in ("wide.png", "wide.tif"):
        wide.save(name)
        expect(name, 1, False, scaled([(number,) for number in numbers], 65535))


LIGHT = [(1, 0.5, 0.25), (2, 4, 8), (0.125, 0.0625, 0.125), (16, 1, 8), (0.5, 0.5, 0.5), (1, 1, 1)]


def write_hdr():
    """Red, green and blue share the exponent of the largest one."""
    data = b"#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n-Y %d +X %d\n" % (HEIGHT, WIDTH)
    for pixel in LIGHT:
        exponent = max(pixel).as_integer_ratio()
        power = exponent[0].bit_length() - exponent[1].bit_length() + 1  # max(pixel) is 2 ** (power - 1)
        data += bytes(round(number / 2.0 ** power * 256) for number in pixel) + bytes([power + 128])
    with open("light.hdr", "wb") as file:
        file.write(data)
    expect("light.hdr", 3, True, LIGHT)


def exr_attribute(name, kind, value):
    return name + b"\0" + kind + b"\0" + struct.pack("<i", len(value)) + value


def write_exr(name, kind, code):
    """Scan lines without compression; channels are in alphabetical order, each line channel by channel."""
    pixels = [pixel + (0.25 * i,) for i, pixel in enumerate(LIGHT)]
    pixels = [tuple(number * pixel[3] for number in pixel[:3]) + pixel[3:] for pixel in pixels]  # as the format wants
    channels = b"".join(letter + b"\0" + struct.pack("<iBxxxii", kind, 0, 1, 1) for letter in (b"A", b"B", b"G", b"R"))
    window = struct.pack("<4i", 0, 0, WIDTH - 1, HEIGHT - 1)
    header = b"\x76\x2f\x31\x01" + struct.pack("<i", 2)
    header += exr_attribute(b"channels", b"chlist", channels + b"\0")
    header += exr_attribute(b"compression", b"compression", b"\0")
    header += exr_attribute(b"dataWindow", b"box2i", window) + exr_attribute(b"displayWindow", b"box2i", window)
    header += exr_attribute(b"lineOrder", b"lineOrder", b"\0")
    header += exr_attribute(b"pixelAspectRatio", b"float", struct.pack("<f", 1))
    header += exr_attribute(b"screenWindowCenter", b"v2f", struct.pack("<2f", 0, 0))
    header += exr_attribute(b"screenWindowWidth", b"float", struct.pack("<f", 1)) + b"\0"
    rows, offsets = b"", b""
    for y in range(HEIGHT):
        row = pixels[y * WIDTH:(y + 1) * WIDTH]
        data = b"".join(struct.pack("<" + code, pixel[channel]) for channel in (3, 2, 1, 0) for pixel in row)
        offsets += struct.pack("<q", len(header) + 8 * HEIGHT + len(rows))
        rows += struct.pack("<ii", y, len(data)) + data
    with open(name, "wb") as file:
        file.write(header + offsets + rows)
    expect(name, 4, True, pixels)


def write_psd(name, channels):
    """Rows of each channel in turn, without compression, and no layers."""
    data = b"8BPS" + struct.pack(">H6xHIIHH", 1, channels, HEIGHT, WIDTH, 8, 1 if channels == 1 else 3)
    data += struct.pack(">IIIH", 0, 0, 0, 0)
    pixels = list(picture("L" if channels == 1 else "RGB").getdata())
    pixels = [pixel if isinstance(pixel, tuple) else (pixel,) for pixel in pixels]
    for channel in range(channels):
        data += bytes(pixel[channel] for pixel in pixels)
    with open(name, "wb") as file:
        file.write(data)
    expect(name, channels, False, scaled(pixels))


write_with_pillow()
write_hdr()
write_exr("half.exr", 1, "e")
write_exr("float.exr", 2, "f")
write_psd("l.psd", 1)
write_psd("rgb.psd", 3)
with open("expected.txt", "w", encoding="ascii") as expected:
    expected.writelines(lines)
