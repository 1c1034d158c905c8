#!/usr/bin/env python3
"""Writes cipher_vectors.txt, computed from the format of stored passwords and not with the library's code.

One line a vector: key, compression mode, protection mode, plain bytes, ciphertext. All but the modes are hexadecimal;
an empty plaintext is "-".
"""

import hashlib
import os
import struct
import zlib


def crc16(data):
    """CRC-16 of ISO 3309, as HDLC uses it."""
    crc = 0xFFFF
    for byte in data:
        crc ^= byte
        for _ in range(8):
            crc = (crc >> 1) ^ (0x8408 if crc & 1 else 0)
    return crc ^ 0xFFFF


def encipher(key, compression, protection, random, plain):
    flags, payload = 0, plain
    if compression != 2:
        packed = struct.pack(">I", len(plain)) + (zlib.compress(plain, 9) if plain else b"")
        if compression == 1 or len(packed) < len(plain):
            flags, payload = 1, packed
    integrity = b""
    if protection == 1:
        flags |= 2
        integrity = struct.pack(">H", crc16(payload))
    elif protection == 2:
        flags |= 4
        integrity = hashlib.sha1(payload).digest()
    parts, last, out = struct.pack("<Q", key), 0, bytearray()
    for i, byte in enumerate(bytes([random]) + integrity + payload):
        last = byte ^ parts[i % 8] ^ last
        out.append(last)
    return bytes([3, flags]) + bytes(out)


def packed_size(plain):
    return 4 + len(zlib.compress(plain, 9))


assert crc16(b"123456789") == 0x906E

# The last is as long compressed as plain: automatic compression leaves it alone.
equal = next(b"a" * n for n in range(1, 100) if packed_size(b"a" * n) == n)
plains = [(b"", (0, 1, 2)), (bytes(range(256)), (0, 1, 2)), (b"a" * 300, (0,)), (equal, (0,))]
here = os.path.dirname(os.path.abspath(__file__))
with open(os.path.join(here, "cipher_vectors.txt"), "w", encoding="ascii") as out:
    for number, (plain, compressions) in enumerate(plains):
        for compression in compressions:
            for protection in (0, 1, 2):
                key = 0x5E3D71A09C4B2F68 if number % 2 else 0xFF00000000000001
                random = (number * 67 + compression * 31 + protection * 7) % 256
                cipher = encipher(key, compression, protection, random, plain)
                print(f"{key:016x} {compression} {protection} {plain.hex() or '-'} {cipher.hex()}", file=out)
