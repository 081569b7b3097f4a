"""What happens while a call waits for the service: the host's timers, calls from within them, a host that quits, a user who
presses STOP; and objects on several threads, in both kinds of apartment.

    waiting.py           the sample data in QUORVEX_TEST_DATA, the service at QUORVEX_SERVICE_URL
"""
import os
import sys
import threading
import time
import urllib.request

from bindings import PROGID, Checks, Comtypes, Early, Late, start_clerk

import pythoncom
import timer
import win32api
import win32com.client
import win32con
import win32gui

DATA = os.environ["QUORVEX_TEST_DATA"]
SERVICE = os.environ["QUORVEX_SERVICE_URL"]
LIMIT = 29  # seconds; a request that nothing ends waits for 30
NO_ANSWER = "Sorry your internet connection timed out.   Is the internet working? or a firewall blocking service?"


def misbehave(query):
    urllib.request.urlopen(f"{SERVICE}/test/{query}").read()


def asked():
    return int(urllib.request.urlopen(SERVICE + "/test/count").read())


def on_timer(milliseconds, action):
    """Calls the action again and again from the host's message loop until the identifier that this returns is killed."""
    return timer.set_timer(milliseconds, lambda *_: action())


def check_timers(checks, binding):
    """Timers run while a call waits; a call from within one gets an empty reply and the waiting call its own."""
    ticks, nested = [], []

    def tick():
        ticks.append(time.monotonic())
        if len(ticks) == 3:
            nested.append(binding.call("GetDataFromHTTPRequest", SERVICE + "/test/count")[0])

    binding.call("SetServiceURL", SERVICE)
    misbehave("next?mode=slow&ms=1500&page=SearchForAddress")
    identifier = on_timer(50, tick)
    try:
        checks.equal(f"{binding.name}: the waiting call", binding.call("GetFullAddressToList", "AB1 0DF")[0], True)
    finally:
        timer.kill_timer(identifier)
    checks.true(f"{binding.name}: {len(ticks)} ticks", len(ticks) >= 10)
    checks.equal(f"{binding.name}: the call from within", nested, [""])
    checks.equal(f"{binding.name}: addresses", binding.object.RecordCount, 6)


def check_posted_messages(checks):
    """A window of the host gets what is posted to it while a call waits, in its order; the rest stays in the queue."""
    seen = []
    window_class = win32gui.WNDCLASS()
    window_class.lpszClassName = "host"
    window_class.lpfnWndProc = {win32con.WM_USER: lambda window, message, w, l: seen.append(w) or 0}
    window = win32gui.CreateWindow(win32gui.RegisterClass(window_class), "", 0, 0, 0, 0, 0, 0, 0, 0, None)
    binding = Early()
    binding.call("SetServiceURL", SERVICE)
    misbehave("next?mode=slow&ms=500&page=SearchForAddress")
    for number in range(100):
        win32gui.PostMessage(window, win32con.WM_USER, number, 0)
    checks.equal("a call while messages come", binding.call("GetFullAddressToList", "AB1 0DF")[0], True)
    checks.true("messages came meanwhile", seen)
    win32gui.PumpWaitingMessages()
    checks.equal("messages", seen, list(range(100)))
    win32gui.DestroyWindow(window)


def check_quitting(checks):
    """A host that quits while a call waits gets it back at once, and still sees the message that ends its loop."""
    binding = Late()
    binding.call("SetServiceURL", SERVICE)
    misbehave("next?mode=never&page=SearchForAddress")
    identifier = on_timer(200, lambda: win32gui.PostQuitMessage(3))
    started = time.monotonic()
    checks.equal("a call while the host quits", binding.call("GetFullAddressToList", "AB1 0DF")[0], False)
    timer.kill_timer(identifier)
    checks.true("it came back before its time", time.monotonic() - started < LIMIT)
    checks.equal("its reason", binding.object.General_errormessage, NO_ANSWER)
    checks.true("the host's loop ends", win32gui.PumpWaitingMessages())
    misbehave("reset")


def check_stop(checks, make):
    """STOP ends a search of the dialog, and the dialog can be closed."""
    binding = make()
    binding.call("SetServiceURL", SERVICE)
    misbehave("next?mode=never&page=SearchForAddress")
    started, before = time.monotonic(), asked()
    result = binding.call("SearchForFullAddressWithDialogue", "AB1 0DF", "Stop", True, False, False)[0]
    checks.equal(f"{binding.name}: stopped", result, False)
    checks.true(f"{binding.name}: stopped before its time", time.monotonic() - started < LIMIT)
    checks.equal(f"{binding.name}: searches", asked(), before + 1)
    misbehave("reset")


def check_threads(checks):
    """Threads with an object each, in apartments of both kinds, side by side and one used from another apartment."""
    failures = []

    def work(apartment):
        pythoncom.CoInitializeEx(apartment)
        try:
            lookup = win32com.client.dynamic.Dispatch(PROGID)
            lookup.LMSetDataPath(DATA)
            for _ in range(5):
                if lookup.GetFullAddressToList("AB1 0DF")[0] is not True or lookup.RecordCount != 6:
                    failures.append(f"{apartment}: {lookup.General_errormessage}")
            lookup = None
        except Exception as error:
            failures.append(repr(error))
        finally:
            pythoncom.CoUninitialize()

    kinds = [pythoncom.COINIT_APARTMENTTHREADED, pythoncom.COINIT_MULTITHREADED] * 2
    threads = [threading.Thread(target=work, args=(kind,)) for kind in kinds]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join(60)
    checks.equal("threads that did not end", [thread for thread in threads if thread.is_alive()], [])
    checks.equal("threads", failures, [])

    # An object of this apartment, called from another one by its proxy: this one has to handle messages meanwhile.
    lookup = win32com.client.dynamic.Dispatch(PROGID)
    stream = pythoncom.CoMarshalInterThreadInterfaceInStream(pythoncom.IID_IDispatch, lookup._oleobj_)
    answers = []

    def call_over():
        pythoncom.CoInitializeEx(pythoncom.COINIT_MULTITHREADED)
        proxy = win32com.client.dynamic.Dispatch(pythoncom.CoGetInterfaceAndReleaseStream(stream, pythoncom.IID_IDispatch))
        answers.append(proxy.GetBetweenTags("<t>", "<t>a</t>b", "</t>", 1))
        proxy = None
        pythoncom.CoUninitialize()

    thread = threading.Thread(target=call_over)
    thread.start()
    while thread.is_alive():
        pythoncom.PumpWaitingMessages()
        win32api.Sleep(5)
    checks.equal("through a proxy", answers, [("a", "<t>", "b", "</t>", 1, "")])


def main():
    checks = Checks()
    clerk = start_clerk("impatient")
    try:
        for make in (Late, Comtypes):
            check_timers(checks, make())
            check_stop(checks, make)
        check_posted_messages(checks)
        check_quitting(checks)
        check_threads(checks)
    finally:
        clerk.kill()
    return checks.end()


if __name__ == "__main__":
    sys.exit(main())
