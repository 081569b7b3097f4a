"""Makes optional text parameters of a type library by-reference ones, keeping their defaults, and takes out the time.

widl refuses a default value on a by-reference text, so such parameters are compiled as [in, optional, defaultvalue] BSTR and
get the type "pointer to BSTR" and the flags in, out, optional, default here. The size that the function's record says it
needs in memory grows by the new level of pointers: callers allocate by it. widl notes the time of its run twice, as text and
as a number; either would make two builds of one commit differ. Usage:

    patch_typelib.py IN.tlb OUT.tlb LIKE NAME...

LIKE is the name of any ordinary by-reference text parameter, whose type is taken over; NAME... are the parameters to change.
The layout is that of the "MSFT" type library format; offsets are in bytes.
"""
import re
import struct
import sys
import uuid

HEADER_SIZE = 0x54
HAS_HELP_FILE = 0x100
TYPEINFO_SIZE = 100
SEGMENT_SIZE = 16
GUID_SEGMENT, NAME_SEGMENT, CUSTOM_DATA_SEGMENT, CUSTOM_ENTRY_SEGMENT = 5, 7, 11, 12
COMPILE_TIME = uuid.UUID("DE77BA63-517C-11D1-A2DA-0000F8773CE9").bytes_le  # the custom value that holds it
PARAMETER_SIZE = 12
VT_BSTR = 8
FLAG_IN_OUT = 3
FLAG_DEFAULT = 0x20
MEMORY_SIZE = 14  # in a function's record, 16 bits
POINTER_MEMORY = 8


def clear_compile_time(data: bytearray, segments: int) -> None:
    guids, values, entries = (struct.unpack_from("<ii", data, segments + segment * SEGMENT_SIZE)
                              for segment in (GUID_SEGMENT, CUSTOM_DATA_SEGMENT, CUSTOM_ENTRY_SEGMENT))
    for entry in range(entries[0], entries[0] + entries[1], 12):
        guid, value = struct.unpack_from("<ii", data, entry)
        if data[guids[0] + guid:][:len(COMPILE_TIME)] == COMPILE_TIME:
            struct.pack_into("<I", data, values[0] + value + 2, 0)  # the value's type precedes it


def main() -> None:
    source, target, like, wanted = sys.argv[1], sys.argv[2], sys.argv[3], set(sys.argv[4:])
    with open(source, "rb") as file:
        data = bytearray(file.read())

    def number(offset: int) -> int:
        return struct.unpack_from("<i", data, offset)[0]

    count = number(0x20)
    segments = HEADER_SIZE + (4 if number(0x14) & HAS_HELP_FILE else 0) + 4 * count
    typeinfos, names = number(segments), number(segments + NAME_SEGMENT * SEGMENT_SIZE)

    def name(offset: int) -> str:
        start = names + offset + 12
        return data[start:start + data[names + offset + 8]].decode("latin1")

    changed = 0
    for index in range(count):
        info = typeinfos + index * TYPEINFO_SIZE
        members, functions = number(info + 4), number(info + 0x18) & 0xFFFF
        if members <= 0:
            continue
        parameters, at = [], members + 4
        for _ in range(functions):
            size = number(at) & 0xFFFF
            arguments = struct.unpack_from("<h", data, at + 20)[0]
            parameters += [(at, at + size - PARAMETER_SIZE * (arguments - k)) for k in range(arguments)]
            at += size
        pointer = next((number(p) for _, p in parameters if number(p) >= 0 and name(number(p + 4)) == like), None)
        for function, p in parameters:
            is_text = number(p) < 0 and number(p) & 0xFFFF == VT_BSTR
            if is_text and number(p + 8) & FLAG_DEFAULT and name(number(p + 4)) in wanted:
                if pointer is None:
                    sys.exit(f"patch_typelib: no by-reference text parameter named {like}")
                struct.pack_into("<i", data, p, pointer)
                struct.pack_into("<i", data, p + 8, number(p + 8) | FLAG_IN_OUT)
                memory = struct.unpack_from("<H", data, function + MEMORY_SIZE)[0]
                struct.pack_into("<H", data, function + MEMORY_SIZE, memory + POINTER_MEMORY)
                changed += 1
    if changed == 0:
        sys.exit("patch_typelib: nothing to change; has a parameter been renamed?")
    clear_compile_time(data, segments)
    timeless = re.sub(rb"(?<= at )\w{3} \w{3} [ \d]\d \d\d:\d\d:\d\d \d{4}(?=\n)", b"Thu Jan  1 00:00:00 1970", data)
    with open(target, "wb") as file:
        file.write(timeless)


main()
