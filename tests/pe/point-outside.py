#!/usr/bin/env python3
"""Copies a PE file with its resource directory's address moved far past the end of the file."""
import struct
import sys

data = bytearray(open(sys.argv[1], "rb").read())
pe = struct.unpack_from("<I", data, 0x3C)[0]
optional = pe + 24
magic = struct.unpack_from("<H", data, optional)[0]
directories = optional + (96 if magic == 0x10B else 112)
struct.pack_into("<I", data, directories + 8 * 2, 0x7FFF0000)
open(sys.argv[2], "wb").write(data)
