"""Reads the functions of a type library in the "MSFT" layout. Offsets are in bytes."""
import struct

HEADER_SIZE, HAS_HELP_FILE = 0x54, 0x100
TYPEINFO_SIZE, PARAMETER_SIZE = 100, 12
TYPES_SEGMENT = 9
VT_PTR, VT_SAFEARRAY = 26, 27
FLAG_HAS_DEFAULT = 0x20
# What oleaut32 needs to rebuild a function in memory (32-bit sizes): the description, each parameter, a level of
# pointers, a default value.
FUNCDESC, ELEMDESC, TYPEDESC, PARAMDESCEX = 52, 16, 8, 24


class Functions:
    """The functions of every type: (index of the type, id's place in the record, size recorded, size needed)."""

    def __init__(self, data):
        self.data = data
        count = self.i32(0x20)
        segments = HEADER_SIZE + (4 if self.i32(0x14) & HAS_HELP_FILE else 0) + 4 * count
        self.typeinfos = self.i32(segments)
        self.types = self.i32(segments + TYPES_SEGMENT * 16)
        self.count = count

    def i32(self, at):
        return struct.unpack_from("<i", self.data, at)[0]

    def levels(self, kind):
        """Pointer levels of a type: the sign bit marks a simple type, everything else is a place in the types' table."""
        if kind < 0:
            return 0
        variant = self.i32(self.types + kind) & 0xFFFF
        return 1 + self.levels(self.i32(self.types + kind + 4)) if variant in (VT_PTR, VT_SAFEARRAY) else 0

    def __iter__(self):
        for index in range(self.count):
            info = self.typeinfos + index * TYPEINFO_SIZE
            at, functions = self.i32(info + 4) + 4, self.i32(info + 0x18) & 0xFFFF
            if at <= 4:
                continue
            for _ in range(functions):
                length = self.i32(at) & 0xFFFF
                arguments = struct.unpack_from("<h", self.data, at + 20)[0]
                parameters = [at + length - PARAMETER_SIZE * (arguments - k) for k in range(arguments)]
                needed = FUNCDESC + ELEMDESC * arguments + TYPEDESC * self.levels(self.i32(at + 4))
                for parameter in parameters:
                    needed += TYPEDESC * self.levels(self.i32(parameter))
                    needed += PARAMDESCEX if self.i32(parameter + 8) & FLAG_HAS_DEFAULT else 0
                yield at, self.i32(at + 12) >> 16 & 0xFFFF, needed
                at += length
