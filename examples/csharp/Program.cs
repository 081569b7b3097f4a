// Finds the addresses at a postcode and writes them, or the picked one, as JSON. For .NET 8 or later on Windows; it also compiles
// for .NET Framework 4.8.
//
//   dotnet run -- "PE13 4PZ" [--pick N] [--key KEY] [--server URL] [--data FOLDER]      (-p:Platform=x86 for the 32-bit DLL)
//
// The object is late bound ("dynamic"). csharp-early beside this folder is early bound.
using System;
using System.Collections.Generic;
using System.IO;
using System.Runtime.InteropServices;
using System.Runtime.Serialization;
using System.Runtime.Serialization.Json;
using System.Text;

[DataContract]
internal sealed class Address
{
    [DataMember(Order = 0)] public string Id;
    [DataMember(Order = 1)] public string Organisation;
    [DataMember(Order = 2)] public string Line1;
    [DataMember(Order = 3)] public string Line2;
    [DataMember(Order = 4)] public string Line3;
    [DataMember(Order = 5)] public string Town;
    [DataMember(Order = 6)] public string County;
    [DataMember(Order = 7)] public string Postcode;
    [DataMember(Order = 8)] public string Country;
}

internal sealed class LookupFailed : Exception
{
    public LookupFailed(string message) : base(message) { }
}

internal sealed class AddressLookup : IDisposable
{
    private const int LastLine = 100; // one search hands out this many lines whose records can be read
    private readonly dynamic _lookup;

    public AddressLookup(string key, string server, string data)
    {
        Type type = Type.GetTypeFromProgID("QuorvexLookup.Quorvex");
        if (type == null)
            throw new LookupFailed($"The component is not registered for this {IntPtr.Size * 8}-bit program.");
        _lookup = Activator.CreateInstance(type);
        if (key != null) _lookup.SetDataKey(key);
        if (server != null) _lookup.SetServiceURL(server);
        if (data != null) _lookup.LMSetDataPath(data);
    }

    public List<string> Lines(string postcode)
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
        return new Address
        {
            Id = _lookup.Address_Id,
            Organisation = _lookup.Address_Organisation,
            Line1 = _lookup.Address_Line1,
            Line2 = _lookup.Address_Line2,
            Line3 = _lookup.Address_Line3,
            Town = _lookup.Address_Town,
            County = _lookup.Address_County,
            Postcode = _lookup.Address_Postcode,
            Country = _lookup.Address_Country
        };
    }

    public void Dispose() => Marshal.FinalReleaseComObject(_lookup);
}

internal static class Program
{
    private const string Usage = "usage: FindAddress \"POSTCODE\" [--pick N] [--key KEY] [--server URL] [--data FOLDER]";

    // The component lives in a single-threaded apartment.
    [STAThread]
    private static int Main(string[] arguments)
    {
        string postcode = null;
        int pick = 0;
        var options = new Dictionary<string, string>();
        for (int i = 0; i < arguments.Length; i++)
        {
            if (arguments[i].StartsWith("--", StringComparison.Ordinal) && i + 1 < arguments.Length)
                options[arguments[i]] = arguments[++i];
            else
                postcode = arguments[i];
        }
        if (postcode == null || (Option(options, "--pick") != null && !int.TryParse(Option(options, "--pick"), out pick)))
        {
            Console.Error.WriteLine(Usage);
            return 2;
        }
        try
        {
            using (var lookup = new AddressLookup(Option(options, "--key"), Option(options, "--server"), Option(options, "--data")))
            {
                return Answer(lookup, postcode, pick);
            }
        }
        catch (Exception error) when (error is LookupFailed || error is COMException)
        {
            Console.Error.WriteLine(error.Message);
            return 1;
        }
    }

    private static int Answer(AddressLookup lookup, string postcode, int pick)
    {
        List<string> lines = lookup.Lines(postcode);
        if (pick < 0 || pick > lines.Count)
        {
            Console.Error.WriteLine($"There is no address {pick}; there are {lines.Count}.");
            return 1;
        }
        if (pick > 0)
            WriteJson(lookup.Record(pick - 1));
        else
            WriteJson(lines);
        return lines.Count > 0 ? 0 : 1;
    }

    private static string Option(Dictionary<string, string> options, string name)
    {
        return options.TryGetValue(name, out string value) ? value : null;
    }

    private static void WriteJson<T>(T value)
    {
        using (var text = new MemoryStream())
        {
            using (var writer = JsonReaderWriterFactory.CreateJsonWriter(text, Encoding.UTF8, false, true))
                new DataContractJsonSerializer(typeof(T)).WriteObject(writer, value);
            Console.OutputEncoding = Encoding.UTF8;
            Console.WriteLine(Encoding.UTF8.GetString(text.ToArray()));
        }
    }
}
