"""A few documents to look at: a text, a picture and a PDF, made here and now."""
import os
import struct
import zlib

TEXT = """Welcome to Quillbox.

This file lives on the document server. You see it through the volume: open it, change it, save it,
and every other client of this account sees the change. Copy something in beside it and look again.
"""


def picture(width=320, height=200):
    """A PNG with a colour gradient."""
    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))

    rows = b"".join(b"\0" + bytes(value for x in range(width)
                                  for value in (x * 255 // width, 96 + y * 96 // height, 255 - x * 160 // width))
                    for y in range(height))
    header = struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0)
    return b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(rows)) + chunk(b"IEND", b"")


def handbook(lines=("Quillbox", "Everything in this folder is kept by the document server.")):
    """A PDF of one page."""
    page = "BT /F1 20 Tf 30 TL 72 760 Td " + " ".join(f"({line}) Tj T*" for line in lines) + " ET"
    objects = ("<< /Type /Catalog /Pages 2 0 R >>", "<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
               "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 595 842] /Contents 4 0 R "
               "/Resources << /Font << /F1 5 0 R >> >> >>",
               f"<< /Length {len(page)} >>\nstream\n{page}\nendstream",
               "<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica >>")
    content, places = b"%PDF-1.4\n", []
    for number, text in enumerate(objects, 1):
        places.append(len(content))
        content += f"{number} 0 obj\n{text}\nendobj\n".encode("ascii")
    table = f"xref\n0 {len(objects) + 1}\n0000000000 65535 f \n"
    table += "".join(f"{place:010} 00000 n \n" for place in places)
    trailer = f"trailer\n<< /Size {len(objects) + 1} /Root 1 0 R >>\nstartxref\n{len(content)}\n%%EOF\n"
    return content + (table + trailer).encode("ascii")


def make(folder):
    """Fills a new folder with the documents."""
    os.makedirs(os.path.join(folder, "Pictures"))
    for name, content in (("Welcome.txt", TEXT.encode()), ("Handbook.pdf", handbook()),
                          ("Pictures/Gradient.png", picture())):
        with open(os.path.join(folder, name), "wb") as file:
            file.write(content)
