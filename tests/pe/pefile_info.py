#!/usr/bin/python3
"""Prints what kevro-fileinfo prints for each file, read with pefile instead of KEVRO's reader."""
import sys
import pefile

FIELDS = [("CompanyName", "Company Name:"), ("FileDescription", "File Description:"),
          ("FileVersion", "File Version:"), ("InternalName", "Internal Name:"),
          ("LegalCopyright", "Legal Copyright:"), ("OriginalFileName", "Original FileName:"),
          ("ProductName", "Product Name:"), ("ProductVersion", "Product Version:")]


def first_translation(pe):
    # pefile keeps only the last pair; the first is read from the Var's own bytes.
    for info in getattr(pe, "FileInfo", []) or []:
        for entry in info:
            for var in getattr(entry, "Var", []) or []:
                if b"Translation" not in var.entry and "Translation" not in var.entry:
                    continue
                value = var.get_file_offset() + 6 + 2 * (len("Translation") + 1)
                value = (value + 3) & ~3
                b = pe.__data__[value:value + 4]
                if len(b) == 4:
                    return "%08X" % (b[2] + b[3] * 256 + b[0] * 65536 + b[1] * 16777216)
    return ""


def strings(pe, lang):
    for info in getattr(pe, "FileInfo", []) or []:
        for entry in info:
            for table in getattr(entry, "StringTable", []) or []:
                if table.LangID.decode().lower() == lang.lower():
                    return {k.decode().lower(): v.decode("utf-8") for k, v in table.entries.items()}
    return {}


def describe(path):
    try:
        pe = pefile.PE(path)
    except pefile.PEFormatError:
        return "", "(No version information for this file)"
    lang = first_translation(pe)
    if not lang:
        return "", "(No version information for this file)"
    values = strings(pe, lang)
    texts = [values.get(key.lower(), "").split("\0")[0][:128] for key, _ in FIELDS]
    if not texts[-1].strip(" "):
        return lang, "(No version information for this file)"
    out = ""
    for i, ((_, caption), value) in enumerate(zip(FIELDS, texts)):
        out += caption + "\r\n" + value
        if i < len(FIELDS) - 1:
            out += "\r\n" + ("\r\n" if value else "")
    return lang, out


for path in sys.argv[1:]:
    lang, text = describe(path)
    sys.stdout.buffer.write((path + "\n" + lang + "\n" + text + "\n").encode("utf-8"))
