// Finds the addresses at a postcode and writes them, or the picked one, as JSON.
// Written for .NET 6 or later on Windows (dotnet run -p:Platform=x64 -- "PE13 4PZ"); not run by the project's tests.
//
// The object is late bound ("dynamic"). For early binding make an interop assembly with "tlbimp QuorvexLookup.dll
// /out:QuorvexLookup.Interop.dll", reference it and write "var lookup = new QuorvexLookup.Quorvex();": by-reference
// arguments are then passed with "ref".
//
//   FindAddress "POSTCODE" [--pick N] [--key KEY] [--server URL] [--data FOLDER]
using System;
using System.Collections.Generic;
using System.Runtime.InteropServices;
using System.Text.Encodings.Web;
using System.Text.Json;

internal sealed record Address(string Id, string Organisation, string Line1, string Line2, string Line3, string Town,
                               string County, string Postcode, string Country);

internal sealed class LookupFailed : Exception
{
    public LookupFailed(string message) : base(message) { }
}

internal sealed class AddressLookup : IDisposable
{
    private const int LastLine = 100; // one search hands out this many lines whose records can be read
    private readonly dynamic _lookup;

    public AddressLookup(string? key, string? server, string? data)
    {
        Type? type = Type.GetTypeFromProgID("QuorvexLookup.Quorvex");
        if (type is null)
            throw new LookupFailed($"The component is not registered for this {IntPtr.Size * 8}-bit program.");
        _lookup = Activator.CreateInstance(type)!;
        if (key is not null) _lookup.SetDataKey(key);
        if (server is not null) _lookup.SetServiceURL(server);
        if (data is not null) _lookup.LMSetDataPath(data);
    }

    public IReadOnlyList<string> Lines(string postcode)
    {
        if (!(bool)_lookup.GetFullAddressToList(postcode))
            throw new LookupFailed("The search failed: " + (string)_lookup.General_errormessage);
        var lines = new List<string>();
        while (lines.Count < LastLine)
        {
            string line = _lookup.GetFullAddressLineForSelection();
            if (line.Length == 0) break;
            lines.Add(line);
        }
        return lines;
    }

    // Of a line that was handed out, from 0.
    public Address Record(int index)
    {
        if (!(bool)_lookup.GetFullAddressRecord(index))
            throw new LookupFailed("The address could not be read: " + (string)_lookup.General_errormessage);
        return new Address(_lookup.Address_Id, _lookup.Address_Organisation, _lookup.Address_Line1, _lookup.Address_Line2,
                           _lookup.Address_Line3, _lookup.Address_Town, _lookup.Address_County, _lookup.Address_Postcode,
                           _lookup.Address_Country);
    }

    public void Dispose() => Marshal.FinalReleaseComObject(_lookup);
}

internal static class Program
{
    private static readonly JsonSerializerOptions Json =
        new() { WriteIndented = true, Encoder = JavaScriptEncoder.UnsafeRelaxedJsonEscaping };

    // The component lives in a single-threaded apartment.
    [STAThread]
    private static int Main(string[] arguments)
    {
        string? postcode = null;
        var options = new Dictionary<string, string>();
        for (int i = 0; i < arguments.Length; i++)
        {
            if (arguments[i].StartsWith("--", StringComparison.Ordinal) && i + 1 < arguments.Length)
                options[arguments[i]] = arguments[++i];
            else
                postcode ??= arguments[i];
        }
        int pick = 0;
        if (postcode is null || (options.TryGetValue("--pick", out string? number) && !int.TryParse(number, out pick)))
        {
            Console.Error.WriteLine("usage: FindAddress \"POSTCODE\" [--pick N] [--key KEY] [--server URL] [--data FOLDER]");
            return 2;
        }
        try
        {
            using var lookup = new AddressLookup(options.GetValueOrDefault("--key"), options.GetValueOrDefault("--server"),
                                                 options.GetValueOrDefault("--data"));
            IReadOnlyList<string> lines = lookup.Lines(postcode);
            if (pick < 0 || pick > lines.Count)
            {
                Console.Error.WriteLine($"There is no address {pick}; there are {lines.Count}.");
                return 1;
            }
            Console.OutputEncoding = System.Text.Encoding.UTF8;
            Console.WriteLine(pick > 0 ? JsonSerializer.Serialize(lookup.Record(pick - 1), Json)
                                       : JsonSerializer.Serialize(lines, Json));
            return lines.Count > 0 ? 0 : 1;
        }
        catch (Exception error) when (error is LookupFailed or COMException)
        {
            Console.Error.WriteLine(error.Message);
            return 1;
        }
    }
}
