"""What can be read from screenshots: where something has changed, and bars."""

from __future__ import annotations

import dataclasses

from PIL import Image, ImageChops

# Differences of one channel below this are noise of blending.
NOTICEABLE = 24
# Larger than the strokes of a pointer.
CELL = 16

Color = tuple[int, int, int]


@dataclasses.dataclass(frozen=True)
class Rectangle:
    x: int
    y: int
    width: int
    height: int

    @property
    def center(self) -> tuple[int, int]:
        return self.x + self.width // 2, self.y + self.height // 2

    @property
    def box(self) -> tuple[int, int, int, int]:
        return self.x, self.y, self.x + self.width, self.y + self.height

    def common(self, other: Rectangle) -> Rectangle | None:
        """What both have."""
        left, top = max(self.x, other.x), max(self.y, other.y)
        right = min(self.x + self.width, other.x + other.width)
        bottom = min(self.y + self.height, other.y + other.height)
        return Rectangle(left, top, right - left, bottom - top) if left < right and top < bottom else None

    def contains(self, other: Rectangle) -> bool:
        return (
            self.x <= other.x
            and self.y <= other.y
            and other.x + other.width <= self.x + self.width
            and other.y + other.height <= self.y + self.height
        )


def difference(before: Image.Image, after: Image.Image) -> Image.Image:
    """A mask, white where the pictures differ noticeably."""
    channels = ImageChops.difference(before.convert("RGB"), after.convert("RGB")).split()
    strongest = ImageChops.lighter(ImageChops.lighter(channels[0], channels[1]), channels[2])
    return strongest.point(lambda value: 255 if value >= NOTICEABLE else 0)


def changed(before: Image.Image, after: Image.Image, within: Rectangle) -> Rectangle | None:
    """The smallest rectangle with all changes of that part of the screen."""
    box = difference(before.crop(within.box), after.crop(within.box)).getbbox()
    if box is None:
        return None
    left, top, right, bottom = box
    return Rectangle(within.x + left, within.y + top, right - left, bottom - top)


def solid_change(before: Image.Image, after: Image.Image, within: Rectangle) -> Rectangle | None:
    """The smallest rectangle with all that has changed there, without small things such as the pointer."""
    mask = difference(before.crop(within.box), after.crop(within.box))
    solid = mask.reduce(CELL).point(lambda value: 255 if value == 255 else 0).getbbox()
    if solid is None:
        return None
    left, top, right, bottom = (CELL * edge for edge in solid)
    x, y = max(0, left - CELL), max(0, top - CELL)
    box = mask.crop((x, y, min(right + CELL, mask.width), min(bottom + CELL, mask.height))).getbbox()
    return Rectangle(within.x + x + box[0], within.y + y + box[1], box[2] - box[0], box[3] - box[1])


def background(picture: Image.Image) -> Color:
    """The color that most pixels have."""
    colors = picture.convert("RGB").getcolors(picture.width * picture.height)
    return max(colors)[1]


def foreground(picture: Image.Image) -> Image.Image:
    """A mask of what stands out from the background."""
    empty = Image.new("RGB", picture.size, background(picture))
    return difference(empty, picture)


def brightness(color: Color) -> float:
    """From 0, black, to 255."""
    red, green, blue = color
    return 0.299 * red + 0.587 * green + 0.114 * blue


def ink_brightness(picture: Image.Image, on: Color | None = None) -> float:
    """The brightness of the pixels that stand out most from `on`, or else from the background."""
    ground = brightness(on or background(picture))
    values = sorted((brightness(pixel) for pixel in picture.convert("RGB").getdata()), key=lambda v: abs(v - ground))
    strongest = values[-max(1, len(values) // 50) :]
    return sum(strongest) / len(strongest)


def strong_ink(picture: Image.Image, ground: Color) -> Image.Image:
    """A mask of the pixels that stand out at least half as much as the strongest ones."""
    empty = Image.new("RGB", picture.size, ground)
    gray = ImageChops.difference(empty, picture.convert("RGB")).convert("L")
    limit = max(NOTICEABLE, gray.getextrema()[1] / 2)
    return gray.point(lambda value: 255 if value >= limit else 0)


def bars(picture: Image.Image, ground: Color) -> list[Rectangle]:
    """The upright bars of a picture, from left to right: runs of columns with ink near the lowest row of ink.
    In a picture of little else they may take more room than their ground, which therefore has to be told."""
    mask = strong_ink(picture, ground)
    box = mask.getbbox()
    if box is None:
        return []
    bottom = box[3] - 1
    # Rounded corners may leave the lowest row of a bar without ink.
    foot = mask.crop((0, max(0, bottom - 1), picture.width, bottom + 1))
    inked = [foot.crop((x, 0, x + 1, foot.height)).getbbox() is not None for x in range(picture.width)] + [False]
    found: list[Rectangle] = []
    start = None
    for x, has_ink in enumerate(inked):
        if has_ink and start is None:
            start = x
        elif not has_ink and start is not None:
            top = mask.crop((start, 0, x, bottom + 1)).getbbox()[1]
            found.append(Rectangle(start, top, x - start, bottom + 1 - top))
            start = None
    return found
