// Ranks branches, engineers or stores by their distance from a postcode.
//
//   cscript //nologo nearest_branch.js BRANCHES.CSV "POSTCODE" [options]
//
//   /km:N          no farther than N kilometres (default 50)
//   /server:URL    web service to ask     /key:KEY   data key for the service
//   /data:FOLDER   local data files instead of the service
//
// The CSV file has a header line and the columns name, telephone, longitude, latitude (WGS84 degrees, with a point);
// fields may stand in double quotes. Lines that cannot be used are named and passed over.
// Ends with 0 when a branch is in reach, 1 when none is, 2 for a wrong call.

var options = {}, unnamed = [];
readArguments();
if (unnamed.length !== 2) {
    WScript.Echo("usage: cscript //nologo nearest_branch.js BRANCHES.CSV \"POSTCODE\" [/km:N] [/server:URL] [/key:KEY] [/data:FOLDER]");
    WScript.Quit(2);
}
WScript.Quit(main(unnamed[0], unnamed[1]));

function readArguments() {
    for (var i = 0; i < WScript.Arguments.length; ++i) {
        var argument = WScript.Arguments(i);
        var option = /^\/(\w+):(.*)$/.exec(argument);
        if (option === null) {
            unnamed.push(argument);
        } else {
            options[option[1].toLowerCase()] = option[2];
        }
    }
}

function main(file, postcode) {
    var kilometres = "km" in options ? parseFloat(options.km) : 50;
    if (!(kilometres > 0)) return fail("/km needs a number above 0.", 2);
    var lookup = newLookup();
    if (lookup === null) return 2;
    var branches = readBranches(file);
    if (branches === null) return 2;

    if (!lookup.GetPostZonAddressRecord(postcode)) {
        return fail("The postcode \"" + postcode + "\" was not found. " + lookup.General_errormessage, 1);
    }
    if (lookup.PostZon_Longitude_wgs84 === "" || lookup.PostZon_Latitude_wgs84 === "") {
        return fail("It is not known where the postcode \"" + postcode + "\" lies.", 1);
    }
    var home = { longitude: Number(lookup.PostZon_Longitude_wgs84), latitude: Number(lookup.PostZon_Latitude_wgs84) };
    var inReach = rank(lookup, home, branches, kilometres);
    if (inReach.length === 0) return fail("No branch within " + kilometres + " km of " + postcode + ".", 1);
    for (var i = 0; i < inReach.length; ++i) {
        var branch = inReach[i];
        WScript.Echo((i + 1) + ". " + branch.name + ", " + branch.telephone + ": " + branch.distance.toFixed(1) + " km");
    }
    return 0;
}

function newLookup() {
    var lookup;
    try {
        lookup = new ActiveXObject("QuorvexLookup.Quorvex");
    } catch (error) {
        fail("The address lookup component is not registered for this script host (regsvr32 QuorvexLookup.dll).", 2);
        return null;
    }
    if ("key" in options) lookup.SetDataKey(options.key);
    if ("server" in options) lookup.SetServiceURL(options.server);
    if ("data" in options) lookup.LMSetDataPath(options.data);
    return lookup;
}

// The component's own nearest list answers through arguments, through which this kind of host gets nothing back; so
// the distances are asked one by one.
function rank(lookup, home, branches, kilometres) {
    var inReach = [];
    for (var i = 0; i < branches.length; ++i) {
        var branch = branches[i];
        branch.distance = lookup.GetDistance(home.latitude, home.longitude, branch.latitude, branch.longitude);
        if (branch.distance <= kilometres) inReach.push(branch);
    }
    inReach.sort(function (a, b) { return a.distance - b.distance; });
    return inReach;
}

function readBranches(file) {
    var stream;
    try {
        stream = new ActiveXObject("Scripting.FileSystemObject").OpenTextFile(file, 1);
    } catch (error) {
        fail("\"" + file + "\" cannot be read: " + error.message, 2);
        return null;
    }
    var lines = stream.AtEndOfStream ? [] : stream.ReadAll().split(/\r?\n/);
    stream.Close();
    var branches = [];
    for (var i = 1; i < lines.length; ++i) {
        if (/^\s*$/.test(lines[i])) continue;
        var fields = splitCsv(lines[i]);
        var longitude = toNumber(fields[2]);
        var latitude = toNumber(fields[3]);
        if (fields.length < 4 || isNaN(longitude) || isNaN(latitude)) {
            WScript.Echo("Line " + (i + 1) + " is passed over: it needs name, telephone, longitude and latitude.");
            continue;
        }
        branches.push({ name: fields[0], telephone: fields[1], longitude: longitude, latitude: latitude });
    }
    return branches;
}

function toNumber(text) {
    return /^\s*[-+]?\d+(\.\d+)?\s*$/.test(String(text)) ? parseFloat(text) : NaN;
}

// The fields of a line; a quote inside a quoted field is doubled.
function splitCsv(line) {
    var fields = [], field = "", quoted = false;
    for (var i = 0; i < line.length; ++i) {
        var c = line.charAt(i);
        if (quoted && c === "\"" && line.charAt(i + 1) === "\"") {
            field += c;
            ++i;
        } else if (c === "\"") {
            quoted = !quoted;
        } else if (c === "," && !quoted) {
            fields.push(field);
            field = "";
        } else {
            field += c;
        }
    }
    fields.push(field);
    return fields;
}

function fail(text, code) {
    WScript.Echo(text);
    return code;
}
