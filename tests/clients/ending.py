"""Releasing objects and ending the interpreter: nothing is leaked and nothing hangs, whatever is still alive.

    ending.py            runs itself once for each way of ending
"""
import ctypes
import gc
import os
import subprocess
import sys
import threading
import time

DATA = os.environ["QUORVEX_TEST_DATA"]
SERVICE = os.environ["QUORVEX_SERVICE_URL"]
LONGEST_END = 25  # seconds from the program's last line; nothing that ends waits for a reply's 30


class Counters(ctypes.Structure):
    _fields_ = [("size", ctypes.c_ulong), ("faults", ctypes.c_ulong)] + [
        (name, ctypes.c_size_t) for name in ("peak_working", "working", "peak_paged", "paged", "peak_nonpaged", "nonpaged",
                                             "pagefile", "peak_pagefile")]


def used():
    """Handles and committed kilobytes of this process."""
    handles = ctypes.c_ulong()
    process = ctypes.c_void_p(ctypes.windll.kernel32.GetCurrentProcess())
    ctypes.windll.kernel32.GetProcessHandleCount(process, ctypes.byref(handles))
    counters = Counters(size=ctypes.sizeof(Counters))
    ctypes.windll.psapi.GetProcessMemoryInfo(process, ctypes.byref(counters), counters.size)
    return handles.value, counters.pagefile // 1024


def check_rounds(checks):
    import pythoncom
    from bindings import bindings

    for make in bindings():
        def round_trip(_):
            binding = make()
            binding.call("LMSetDataPath", DATA)
            binding.call("GetFullAddressToList", "AB1 0DF")
            binding.call("GetFullAddressRecord", 0)

        for i in range(10):  # caches are filled
            round_trip(i)
        gc.collect()
        objects, (handles, kilobytes) = pythoncom._GetInterfaceCount(), used()
        for i in range(40):
            round_trip(i)
        gc.collect()
        more_handles, more_kilobytes = used()
        checks.equal(f"{make.name}: objects that were not released", pythoncom._GetInterfaceCount() - objects, 0)
        checks.true(f"{make.name}: {more_handles - handles} handles", more_handles - handles <= 2)
        checks.true(f"{make.name}: {more_kilobytes - kilobytes} KB in 40 rounds", more_kilobytes - kilobytes < 256)


def an_object_is_alive():
    """pywin32: a global variable and a reference cycle hold objects when the interpreter ends."""
    from bindings import Late

    globals()["kept"] = Late()
    cycle = [Late()]
    cycle.append(cycle)
    kept.call("GetFullAddressToList", "ZZ99")


def comtypes_is_alive():
    from bindings import Comtypes

    globals()["kept"] = Comtypes()
    kept.call("LMSetDataPath", DATA)
    kept.call("GetFullAddressToList", "AB1 0DF")


def com_is_left_first():
    import pythoncom
    from bindings import Late

    globals()["kept"] = Late()
    kept.call("LMSetDataPath", DATA)
    pythoncom.CoUninitialize()


def a_thread_waits():
    """The interpreter ends while a thread of it waits for the service."""
    import pythoncom
    from bindings import Late

    Late()  # type information is read on this thread

    def wait():
        pythoncom.CoInitialize()
        lookup = Late()
        lookup.call("SetServiceURL", SERVICE)
        lookup.call("GetDataFromHTTPRequest", SERVICE + "/xmlservice/GetLookups.aspx?datatype=1")

    import urllib.request

    urllib.request.urlopen(SERVICE + "/test/next?mode=never&page=GetLookups").read()
    before = int(urllib.request.urlopen(SERVICE + "/test/count").read())
    threading.Thread(target=wait, daemon=True).start()
    while int(urllib.request.urlopen(SERVICE + "/test/count").read()) == before:
        time.sleep(0.02)


ENDS = [an_object_is_alive, comtypes_is_alive, com_is_left_first, a_thread_waits]


def main():
    if len(sys.argv) > 1:
        globals()[sys.argv[1]]()
        print("end", flush=True)
        return 0
    from bindings import Checks

    checks = Checks()
    check_rounds(checks)
    for end in ENDS:
        child = subprocess.Popen([sys.executable, "-B", os.path.abspath(__file__), end.__name__], stdout=subprocess.PIPE)
        checks.equal(f"{end.__name__}: last line", child.stdout.readline().strip(), b"end")
        started = time.monotonic()
        checks.equal(f"{end.__name__}: exit code", child.wait(60), 0)
        checks.true(f"{end.__name__}: ended in time", time.monotonic() - started < LONGEST_END)
    import urllib.request

    urllib.request.urlopen(SERVICE + "/test/reset").read()
    return checks.end()


if __name__ == "__main__":
    sys.exit(main())
