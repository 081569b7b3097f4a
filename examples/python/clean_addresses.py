"""Completes the addresses of a CSV file from their postcodes.

Python 3.8 or later on Windows with pywin32 (pip install pywin32). A 64-bit Python needs the 64-bit DLL registered, a 32-bit one
the 32-bit DLL.

    python clean_addresses.py customers.csv cleaned.csv --postcode Postcode --house Address1 [--data FOLDER | --key KEY]

Every row keeps its columns and gets new ones: match (exact, several, none, failed), candidates, and the fields of the
address when exactly one fits. A house fits an address line that holds its words side by side, case ignored.
"""
import argparse
import csv
import sys

FIELDS = ("Id", "Organisation", "Line1", "Line2", "Line3", "Town", "County", "Postcode", "Country")
NEW_COLUMNS = ["match", "candidates"] + ["address_" + field.lower() for field in FIELDS]
LAST_LINE = 100  # one search hands out this many lines whose records can be read


def result(answer):
    """A method's result. Where a method has by-reference arguments pywin32 returns a tuple of the result and their values, and a
    tuple is always true."""
    return answer[0] if isinstance(answer, tuple) else answer


def new_lookup(options):
    import win32com.client

    lookup = win32com.client.Dispatch("QuorvexLookup.Quorvex")
    if options.key:
        lookup.SetDataKey(options.key)
    if options.server:
        lookup.SetServiceURL(options.server)
    if options.data:
        lookup.LMSetDataPath(options.data)
    return lookup


def lines_at(lookup, postcode):
    """The display lines at a postcode; None when the search failed."""
    if not result(lookup.GetFullAddressToList(postcode)):
        return None
    lines = []
    while len(lines) < LAST_LINE:
        line = lookup.GetFullAddressLineForSelection()
        if not line:
            break
        lines.append(line)
    return lines


def fits(line, house):
    """True when the line's words hold the house: "12" fits "12 HIGH STREET" and not "112 HIGH STREET"."""
    wanted = house.upper().replace(",", " ").split()
    words = line.upper().split()
    if not wanted:
        return True
    return any(words[i:i + len(wanted)] == wanted for i in range(len(words)))


def house_of(text):
    """What names the house in the first address line: a number with its letter, or the whole text."""
    words = text.split()
    if words and words[0][:1].isdigit():
        return words[0]
    return text


class Cleaner:
    def __init__(self, lookup, options):
        self.lookup = lookup
        self.options = options
        self.counts = {"exact": 0, "several": 0, "none": 0, "failed": 0}

    def clean(self, row):
        match, candidates, index = self.find(row)
        self.counts[match] += 1
        row["match"] = match
        row["candidates"] = candidates
        for field in FIELDS:
            row["address_" + field.lower()] = getattr(self.lookup, "Address_" + field) if index is not None else ""
        return row

    def find(self, row):
        """Kind of match, number of candidates, and the position of the only one, whose record is then current."""
        postcode = (row.get(self.options.postcode) or "").strip().upper()
        if not postcode:
            return "none", 0, None
        lines = lines_at(self.lookup, postcode)
        if lines is None:
            return "failed", 0, None
        if self.lookup.RecordCount > len(lines):
            return "several", self.lookup.RecordCount, None  # those that were not handed out may fit as well
        house = house_of((row.get(self.options.house) or "").strip()) if self.options.house else ""
        found = [i for i, line in enumerate(lines) if fits(line, house)]
        if len(found) != 1:
            return ("several" if found else "none"), len(found), None
        if not result(self.lookup.GetFullAddressRecord(found[0])):
            return "failed", 1, None
        return "exact", 1, found[0]


def parse(arguments):
    parser = argparse.ArgumentParser(description=__doc__.split("\n", 1)[0])
    parser.add_argument("input")
    parser.add_argument("output")
    parser.add_argument("--postcode", default="Postcode", help="column of the postcode (Postcode)")
    parser.add_argument("--house", help="column of the house or first address line")
    parser.add_argument("--key", help="data key for the service")
    parser.add_argument("--server", help="web service to ask")
    parser.add_argument("--data", help="folder of local data files to use instead of the service")
    return parser.parse_args(arguments)


def main(arguments):
    options = parse(arguments)
    try:
        lookup = new_lookup(options)
    except ImportError:
        return "pywin32 is not installed (pip install pywin32)"
    except Exception as error:  # pywintypes.com_error
        return f"The address lookup component is not registered for this Python: {error}"
    cleaner = Cleaner(lookup, options)
    with open(options.input, newline="", encoding="utf-8-sig") as source:
        reader = csv.DictReader(source)
        if not reader.fieldnames:
            return f"{options.input} is empty"
        for column in filter(None, (options.postcode, options.house)):
            if column not in reader.fieldnames:
                return f"{options.input} has no column {column}; it has {', '.join(reader.fieldnames)}"
        with open(options.output, "w", newline="", encoding="utf-8-sig") as target:
            writer = csv.DictWriter(target, reader.fieldnames + NEW_COLUMNS, extrasaction="ignore")
            writer.writeheader()
            for row in reader:
                writer.writerow(cleaner.clean(row))
    print(", ".join(f"{count} {kind}" for kind, count in cleaner.counts.items()))
    if cleaner.counts["failed"]:
        print(f"last error: {lookup.General_errormessage}", file=sys.stderr)
    return 1 if cleaner.counts["failed"] else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
