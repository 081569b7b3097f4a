"""Every method and property of the object once through each binding of Python, by-reference arguments both ways, and what each
binding does with wrong calls.

    members.py           the sample data in QUORVEX_TEST_DATA, the service at QUORVEX_SERVICE_URL
"""
import os
import re
import socket
import sys
import tempfile
import time
import winreg

from bindings import CALLS, Checks, Comtypes, Plain, bindings, idl, start_clerk, type_library_members

DATA = os.environ["QUORVEX_TEST_DATA"]
SERVICE = os.environ["QUORVEX_SERVICE_URL"]
LISTS = tempfile.mkdtemp()
MAP = "https://www.openstreetmap.org/?mlat=57.181792&mlon=-2.133233#map=%d/57.181792/-2.133233"
DIRECTORY = "https://www.openstreetmap.org/search?query=plumber%20Service%20near%20Aberdeen"
ACCOUNT = "http://accounts.quorvex.example/A2CustomerAccount/WebAccountCreateFromReseller.aspx?r=%s&id=7"
KM = 111.18957695997622

# One session of a host: (method, arguments, result, by-reference arguments afterwards where they differ from those before), or
# (property, value).
SESSION = [
    ("SetServiceURL", [SERVICE], None),
    ("SetDataKey", ["demo"], None),
    ("SetHomePostCode", ["AB1 0DF"], None),
    ("SetResellerID", [7], None),
    ("GetVersion", [], re.compile(r"\d+\.\d+\.\d+$")),
    ("GetComputerName", [], re.compile(re.escape(socket.gethostname()) + "$", re.I)),
    ("FormatPostCode", ["AB13CD"], "AB1 3CD"),
    ("GetFullAddressToList", ["AB1 0DF"], True),
    ("GetFullAddressLineForSelection", [], "CLOVER BARN KILN HILL LEVERWORTH ABERDEEN ABERDEENSHIRE AB1 0DF"),
    ("GetFullAddressRecord", [0], True),
    ("GetFullAddressRecordByAddressID", ["AB1 0DF_2_F"], True),
    ("GetThoroughfareAddressRecord", ["AB1 0DF"], True),
    ("GetFullAddressToListAdv", ["", "", "KILN HILL", "ABERDEEN", "", ""], True),
    ("GetFullAddressLineForSelectionAdv", ["", ""], "KILN HILL, LEVERWORTH, ABERDEEN", ["", "h"]),
    ("GetFullAddressLineForSelectionAdv", ["", ""], "CLOVER BARN, AB1 0DF", ["AB1 0DF_1_F", "l"]),
    ("GetPostZonAddressRecord", ["AB1 0DF"], True),
    ("GetDistance", [52.0, 0.0, 53.0, 0.0], KM),
    ("GetBetweenTags", ["<t>", "<t>a</t>b", "</t>", 1, ""], "a", ["<t>", "b", "</t>", 1, ""]),
    ("GetDataFromHTTPRequest", [SERVICE + "/test/count"], re.compile(r"\d+\s*$")),
    ("GetUrlforPrefuredMapArea", ["AB1 0DF"], MAP % 12),
    ("GetUrlforPrefuredMapDistrict", ["AB1 0DF"], MAP % 14),
    ("GetUrlforPrefuredMapStreet", ["AB1 0DF"], MAP % 17),
    ("GetUrlDirectoryOfService", ["Aberdeen", "plumber", "Service"], DIRECTORY),
    ("SearchForFullAddressWithDialogue", ["AB1 0DF", "Pick", True, False, True], True),
    ("Address_Id", "AB1 0DF_2_F"),
    ("SearchForFullAddressWithDialogueAdv", ["ADV", "Advanced", LISTS, True, False, True], True),
    ("Address_Id", "AB1 0DF_1_F"),
    ("LMSetOverideComputerName", ["desk"], None),
    ("LMSetDataPath", [DATA], None),
    ("LMGetLastUpdateDate", ["F"], "20260131"),
    ("LMUpdateData", [True, "Update"], True),
    ("GetPostZonAddressLongLat", [-2.133233, 57.181792, ""], "AB1 0DF"),
    ("Nearest_StartList", ["AB1 0DF", 50.0, 0.0, 0.0, 0.0], True, ["AB1 0DF", 50.0, -2.133233, 57.181792, 0.455]),
    ("Nearest_AddToList", [-2.1, 57.15, "Harbour", "01632 960101", ""], True),
    ("Nearest_GetNumberOfRecordsReturned", [], 1),
    ("Nearest_GetRecord", [1, 0.0, 0.0, 0.0, "", "", ""], True, [1, 5.11, -2.1, 57.15, "Harbour", "01632 960101", ""]),
    ("Nearest_EndList", [], None),
]

# What opens a page: (method, arguments, result, page).
PAGES = [
    ("SetServiceURL", [SERVICE], None, None),
    ("SetResellerID", [7], None, None),
    ("DisplayPrefuredMapArea", ["AB1 0DF"], MAP % 12, MAP % 12),
    ("DisplayPrefuredMapDistrict", ["AB1 0DF"], MAP % 14, MAP % 14),
    ("DisplayPrefuredMapStreet", ["AB1 0DF"], MAP % 17, MAP % 17),
    ("DisplayDirectoryOfService", ["Aberdeen", "plumber", "Service"], DIRECTORY, DIRECTORY),
    ("ShowAccountAdminPage", [], None, "https://accounts.quorvex.example/WebAccountLogin.aspx"),
    ("OpenAnAccountAndLinkToResellerForInternalUse", [], None, ACCOUNT % "I"),
    ("OpenAnAccountAndLinkToResellerForWebUse", [], None, ACCOUNT % "W"),
    ("OpenAnAccountAndLinkToResellerForWebAndInternalUse", [], None, ACCOUNT % ""),
    ("DisplayWebPage", ["http://127.0.0.1:1/page?a=b&c=d"], None, "http://127.0.0.1:1/page?a=b&c=d"),
]

MISMATCH, OVERFLOW, COUNT, REQUIRED = "80020005", "8002000A", "8002000E", "8002000F"
# What each binding makes of a wrong call: (call, without type information, pywin32 late, pywin32 early, comtypes). An error is
# an Automation code from the object or the name of an exception that Python raised before the object was called.
WRONG_CALLS = [
    (("GetFullAddressRecord", "x"), MISMATCH, "ValueError", "ValueError", "TypeError"),
    (("GetFullAddressRecord", None), MISMATCH, True, True, "TypeError"),  # pywin32 makes 0 of it
    (("GetDistance", [1], 0, 53, 0), MISMATCH, "TypeError", "TypeError", "TypeError"),
    (("FormatPostCode", None), MISMATCH, "None", "None", ""),
    (("GetFullAddressRecord", 2**40), OVERFLOW, "OverflowError", "OverflowError", True),  # ctypes keeps the low 32 bits
    (("GetFullAddressRecord",), COUNT, True, REQUIRED, True),
    (("GetFullAddressRecord", 1, 2), COUNT, "TypeError", "TypeError", "TypeError"),
    (("GetFullAdressRecord", 1), "AttributeError", "AttributeError", "AttributeError", "AttributeError"),
]
# The same of (property, value) put. Without type information any put that fails is an AttributeError; comtypes lets a misspelled property become an attribute of the Python object.
WRONG_PUTS = [
    (("RecordCount", "x"), "AttributeError", MISMATCH, MISMATCH, "ArgumentError"),
    (("Extra1", None), "AttributeError", MISMATCH, MISMATCH, ""),
    (("Address_Toun", "x"), "AttributeError", "AttributeError", "AttributeError", "x"),
]


class Browser:
    """Writes the pages that are opened into a file instead of showing them."""

    KEYS = [rf"Software\Classes\{scheme}\shell\open\command" for scheme in ("http", "https")]

    def __enter__(self):
        self.file = tempfile.mktemp()
        self.before = [winreg.QueryValue(winreg.HKEY_LOCAL_MACHINE, key) for key in self.KEYS]
        for key in self.KEYS:
            winreg.SetValue(winreg.HKEY_LOCAL_MACHINE, key, winreg.REG_SZ, f'cmd.exe /c echo "%1">>"{self.file}"')
        return self

    def __exit__(self, *_):
        for key, value in zip(self.KEYS, self.before):
            winreg.SetValue(winreg.HKEY_LOCAL_MACHINE, key, winreg.REG_SZ, value)

    def opened(self, count):
        pages = []
        for _ in range(500):
            if os.path.exists(self.file):
                with open(self.file) as file:
                    pages = [line.strip().strip('"') for line in file]
            if len(pages) >= count:
                break
            time.sleep(0.02)
        return pages


def error_name(error):
    """The Automation code of an error that the object raised, else the exception's name."""
    number = getattr(error, "hresult", None)
    return type(error).__name__ if number is None else f"{number & 0xFFFFFFFF:08X}"


def attempt(action):
    try:
        answer = action()
    except Exception as error:
        return error_name(error)
    return answer


def check_call(checks, binding, name, arguments, result, afterwards=None):
    what = f"{binding.name}: {name}"
    got, back = binding.call(name, *arguments)
    if isinstance(result, re.Pattern):
        checks.true(f"{what} gives {got!r}", result.match(got))
    elif isinstance(result, float):
        checks.equal(what, round(got, 9), round(result, 9))
    else:
        checks.equal(what, got, result)
    if back is not None and CALLS[name].parameters and CALLS[name].parameters[0].by_reference:
        checks.equal(f"{what}, arguments afterwards", back, arguments if afterwards is None else afterwards)


def check_pages(checks, binding):
    with Browser() as browser:
        count = 0
        for name, arguments, result, page in PAGES:
            check_call(checks, binding, name, arguments, result)
            if page:
                checks.equal(f"{binding.name}: {name} opens", browser.opened(count + 1)[count:], [page])
                count += 1


def check_properties(checks, binding):
    for member in idl.members():
        if member.kind != "put":
            continue
        values = {"BSTR": ["caf\u00e9 \u20ac \u0000 <x>", ""], "long": [-2147483648, 0], "short": [32767, 0],
                  "VARIANT_BOOL": [True, False]}[member.parameters[0].type]
        for value in values:
            setattr(binding.object, member.name, value)
            checks.equal(f"{binding.name}: {member.name}", getattr(binding.object, member.name), value)


def check_wrong_calls(checks, binding, column):
    binding.call("LMSetDataPath", DATA)
    binding.call("GetFullAddressToList", "AB1 0DF")
    binding.call("GetFullAddressLineForSelection")
    for (name, *arguments), *expected in WRONG_CALLS:
        answer = attempt(lambda: getattr(binding.object, name)(*arguments))
        if isinstance(answer, (tuple, list)):
            answer = binding.split(name, answer)[0]
        checks.equal(f"{binding.name}: {name}{tuple(arguments)}", answer, expected[column])
    for (name, value), *expected in WRONG_PUTS:
        def put():
            setattr(binding.object, name, value)
            return getattr(binding.object, name)
        checks.equal(f"{binding.name}: {name} = {value!r}", attempt(put), expected[column])


def check_defaults(checks, binding):
    """Optional arguments: the type library's defaults are filled in by all but comtypes, which passes empty values."""
    expected = "" if isinstance(binding, Comtypes) else "a"
    checks.equal(f"{binding.name}: defaults", binding.call("GetBetweenTags", "<t>", '<t>a"b')[0], expected)
    if not isinstance(binding, Plain):
        answer = binding.object.GetBetweenTags("<t>", "b", DefaultValue="none")
        checks.equal(f"{binding.name}: named argument", binding.split("GetBetweenTags", answer)[0], "none")


def main():
    checks = Checks()
    checks.equal("the type library", type_library_members(), idl.members())
    called = {row[0] for row in SESSION + PAGES}
    checks.equal("methods that are not called", sorted(CALLS.keys() - called), [])
    clerk = start_clerk()
    try:
        for column, make in enumerate(bindings()):
            binding = make()
            for row in SESSION:
                if len(row) == 2:
                    checks.equal(f"{binding.name}: {row[0]}", getattr(binding.object, row[0]), row[1])
                else:
                    check_call(checks, binding, *row)
            check_pages(checks, make())
            check_defaults(checks, binding)
            check_wrong_calls(checks, make(), column)
            check_properties(checks, make())
    finally:
        clerk.kill()
    return checks.end()


if __name__ == "__main__":
    sys.exit(main())
