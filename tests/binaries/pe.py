"""Reads what Windows' loader reads of a program or DLL: headers, imports, exports and resources."""
import struct
from pathlib import Path

MACHINES = {0x14C: 32, 0x8664: 64}
EXPORTS, IMPORTS, RESOURCES, DELAYED = 0, 1, 2, 13


class Image:
    """One portable executable. Offsets and addresses are in bytes."""

    def __init__(self, path):
        self.path = Path(path)
        self.data = self.path.read_bytes()
        header = self.u32(0x3C)
        if self.data[:2] != b"MZ" or self.data[header:header + 4] != b"PE\0\0":
            raise ValueError(f"{path} is not a portable executable")
        self.bits = MACHINES[self.u16(header + 4)]
        self.timestamp = self.u32(header + 8)
        count, optional = self.u16(header + 6), self.u16(header + 20)
        self.file_flags = self.u16(header + 22)
        start = header + 24
        self.os_version = (self.u16(start + 40), self.u16(start + 42))
        self.subsystem_version = (self.u16(start + 48), self.u16(start + 50))
        self.dll_flags = self.u16(start + 70)
        directories = start + (96 if self.bits == 32 else 112)
        self.directories = [(self.u32(directories + 8 * i), self.u32(directories + 8 * i + 4)) for i in range(16)]
        table = start + optional
        self.sections = []
        for index in range(count):
            at = table + 40 * index
            size, address, raw_size, raw = struct.unpack_from("<4I", self.data, at + 8)
            self.sections.append((self.data[at:at + 8].rstrip(b"\0").decode(), address, size, raw, raw_size))

    def u16(self, at):
        return struct.unpack_from("<H", self.data, at)[0]

    def u32(self, at):
        return struct.unpack_from("<I", self.data, at)[0]

    def offset(self, address):
        for _, start, _, raw, raw_size in self.sections:
            if start <= address < start + raw_size:
                return address - start + raw
        raise ValueError(f"{self.path}: nothing at address {address:#x}")

    def text(self, at):
        return self.data[at:self.data.index(b"\0", at)].decode("ascii")

    def imports(self):
        """{DLL in lower case: [names, or "#ordinal"]}, static ones; delayed ones are an error here, none is used."""
        if self.directories[DELAYED][0]:
            raise ValueError(f"{self.path} has delayed imports, which this reader does not list")
        found = {}
        at = self.directories[IMPORTS][0] and self.offset(self.directories[IMPORTS][0])
        while at and self.u32(at + 12):
            names = found.setdefault(self.text(self.offset(self.u32(at + 12))).lower(), [])
            thunk = self.offset(self.u32(at) or self.u32(at + 16))
            step = self.bits // 8
            while value := int.from_bytes(self.data[thunk:thunk + step], "little"):
                by_ordinal = value >> (self.bits - 1)
                names.append(f"#{value & 0xFFFF}" if by_ordinal else self.text(self.offset(value & 0x7FFFFFFF) + 2))
                thunk += step
            at += 20
        return found

    def exports(self):
        address = self.directories[EXPORTS][0]
        if not address:
            return []
        at = self.offset(address)
        names = self.offset(self.u32(at + 32))
        return sorted(self.text(self.offset(self.u32(names + 4 * i))) for i in range(self.u32(at + 24)))

    def export_time(self):
        address = self.directories[EXPORTS][0]
        return self.u32(self.offset(address) + 4) if address else 0

    def resources(self):
        """{(type, name): bytes}; types and names are numbers or texts. The first language of each."""
        address = self.directories[RESOURCES][0]
        root = self.offset(address) if address else 0
        found = {}

        def entries(at):
            for index in range(self.u16(at + 12) + self.u16(at + 14)):
                key, child = self.u32(at + 16 + 8 * index), self.u32(at + 20 + 8 * index)
                if key & 0x80000000:
                    name = root + (key & 0x7FFFFFFF)
                    key = self.data[name + 2:name + 2 + 2 * self.u16(name)].decode("utf-16-le")
                yield key, root + (child & 0x7FFFFFFF)

        if root:
            for kind, names in entries(root):
                for name, languages in entries(names):
                    for _, leaf in entries(languages):
                        start, size = self.offset(self.u32(leaf)), self.u32(leaf + 4)
                        found.setdefault((kind, name), self.data[start:start + size])
        return found


def version_strings(resource):
    """The fixed file version as four numbers, and {name: value} of a version resource's texts."""
    fixed = resource.index(struct.pack("<I", 0xFEEF04BD))
    high, low = struct.unpack_from("<II", resource, fixed + 8)
    found = {}

    def block(at):
        length, value_length, is_text = struct.unpack_from("<HHH", resource, at)
        end = at + 6
        while resource[end:end + 2] != b"\0\0":
            end += 2
        key = resource[at + 6:end].decode("utf-16-le")
        body = (end + 2 + 3) & ~3
        if is_text and value_length:
            found[key] = resource[body:body + 2 * value_length].decode("utf-16-le").rstrip("\0")
        child = body if is_text else (body + value_length + 3) & ~3
        while not (is_text and value_length) and child < at + length:
            step = struct.unpack_from("<H", resource, child)[0]
            if step == 0:
                break
            block(child)
            child = (child + step + 3) & ~3

    block(0)
    return (high >> 16, high & 0xFFFF, low >> 16, low & 0xFFFF), found
