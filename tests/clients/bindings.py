"""The ways in which Python programs bind to the object, brought to one form of call.

Each binding's call gives (result, by-reference arguments after the call); the second is None where a binding hands none back.
"""
import os
import shutil
import subprocess
import sys
import tempfile

import pythoncom
import win32com

# Generated code must not outlive the type library that it was made from.
_generated = tempfile.mkdtemp()
win32com.__gen_path__ = _generated
import win32com.gen_py  # noqa: E402

win32com.gen_py.__path__ = [_generated]
import win32com.client  # noqa: E402
from win32com.client import dynamic, gencache  # noqa: E402
import comtypes.client  # noqa: E402

comtypes.client.gen_dir = None
sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import idl  # noqa: E402

PROGID = "QuorvexLookup.Quorvex"
CALLS = {member.name: member for member in idl.members() if member.kind == "call"}


class Binding:
    def __init__(self):
        self.object = self.new()

    def call(self, name, *arguments):
        return self.split(name, getattr(self.object, name)(*arguments))

    def split(self, name, answer):
        """pywin32 gives one value, or a tuple: the result, when there is one, then the by-reference arguments."""
        has_result = CALLS[name].result is not None
        if not any(p.by_reference for p in CALLS[name].parameters):
            return answer, []
        if has_result:
            return answer[0], list(answer[1:])
        return None, list(answer) if isinstance(answer, tuple) else [answer]


class Plain(Binding):
    """What hosts without type information do: values only, nothing comes back through arguments."""

    name = "pywin32 without type information"

    def new(self):
        return dynamic.DumbDispatch(PROGID)

    def split(self, name, answer):
        return answer, None


class Late(Binding):
    name = "pywin32 late bound"

    def new(self):
        return win32com.client.dynamic.Dispatch(PROGID)


class Early(Binding):
    name = "pywin32 early bound (makepy)"

    def new(self):
        return gencache.EnsureDispatch(PROGID)


class Comtypes(Binding):
    """Through the interface's own functions. The result comes last, and defaults of in/out arguments are not filled in."""

    name = "comtypes early bound"

    def new(self):
        return comtypes.client.CreateObject(PROGID)

    def split(self, name, answer):
        member = CALLS[name]
        if not any(p.by_reference for p in member.parameters):
            return (answer if member.result is not None else None), []
        if member.result is not None:
            return answer[-1], list(answer[:-1])
        return None, list(answer) if isinstance(answer, list) else [answer]


def bindings():
    return [Plain, Late, Early, Comtypes]


def start_clerk(*arguments):
    """The program that works the dialogs, ready to; the caller ends it."""
    clerk = os.path.join(os.path.dirname(os.path.abspath(__file__)), "clerk.py")
    process = subprocess.Popen([sys.executable, "-B", clerk, *arguments], stdout=subprocess.PIPE)
    if process.stdout.readline().strip() != b"ready":
        raise RuntimeError("clerk.py did not start")
    return process


class Checks:
    """Counts checks, prints those that fail, and ends the program as the runner expects it."""

    def __init__(self):
        self.done = 0
        self.failed = 0

    def equal(self, what, got, expected):
        self.done += 1
        if got != expected or type(got) is not type(expected):
            self.failed += 1
            print(f"FAIL {what}: {got!r} instead of {expected!r}", flush=True)

    def true(self, what, value):
        self.equal(what, bool(value), True)

    def end(self):
        shutil.rmtree(_generated, ignore_errors=True)
        print(f"FAIL {self.failed} of {self.done}" if self.failed else f"PASS {self.done}", flush=True)
        return 1 if self.failed or not self.done else 0


def type_library_members():
    """The members of the registered DLL's type library in the form of idl.members()."""
    kinds = {pythoncom.INVOKE_FUNC: "call", pythoncom.INVOKE_PROPERTYGET: "get", pythoncom.INVOKE_PROPERTYPUT: "put"}
    types = {pythoncom.VT_BSTR: "BSTR", pythoncom.VT_BOOL: "VARIANT_BOOL", pythoncom.VT_I2: "short", pythoncom.VT_I4: "long",
             pythoncom.VT_R8: "double", pythoncom.VT_VARIANT: "VARIANT", pythoncom.VT_VOID: None}

    def plain(description):
        pointer = isinstance(description, tuple) and description[0] == pythoncom.VT_PTR
        return types[description[1] if pointer else description], pointer

    info = dynamic.DumbDispatch(PROGID)._oleobj_.GetTypeInfo()
    found = []
    for i in range(info.GetTypeAttr().cFuncs):
        function = info.GetFuncDesc(i)
        if function.memid >= 0x60000000:  # inherited
            continue
        names = info.GetNames(function.memid)
        parameters = []
        for k, (description, flags, _) in enumerate(function.args):
            name = names[k + 1] if k + 1 < len(names) else "value"
            parameters.append(idl.Parameter(name, *plain(description), bool(flags & pythoncom.PARAMFLAG_FOPT)))
        found.append(idl.Member(function.memid, names[0], kinds[function.invkind], tuple(parameters),
                                plain(function.rettype[0])[0]))
    return found
