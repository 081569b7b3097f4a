// Ranks places by their distance from a postcode, early bound: by-reference arguments are passed with "ref", and what the object
// fills in is in the variables afterwards. NearestPlaces.csproj says how the interop assembly is made.
//
//   dotnet run -- "PE13 4PZ" KILOMETRES FOLDER-OF-LOCAL-DATA
using System;
using System.Globalization;
using System.Runtime.InteropServices;

internal static class Program
{
    private static readonly (string Name, double Latitude, double Longitude)[] Places =
    {
        ("Aberdeen Harbour", 57.1436, -2.0772),
        ("Manchester Piccadilly", 53.4774, -2.2309),
        ("Wisbech Market Place", 52.6661, 0.1597)
    };

    [STAThread]
    private static int Main(string[] arguments)
    {
        double kilometres = 0;
        if (arguments.Length != 3 ||
            !double.TryParse(arguments[1], NumberStyles.Float, CultureInfo.InvariantCulture, out kilometres))
        {
            Console.Error.WriteLine("usage: NearestPlaces \"POSTCODE\" KILOMETRES FOLDER");
            return 2;
        }
        var lookup = new QuorvexLookup.Quorvex();
        try
        {
            string folder = arguments[2];
            lookup.LMSetDataPath(ref folder);
            return Rank(lookup, arguments[0], kilometres);
        }
        finally
        {
            Marshal.FinalReleaseComObject(lookup);
        }
    }

    private static int Rank(QuorvexLookup.Quorvex lookup, string postcode, double kilometres)
    {
        double longitude = 0, latitude = 0, box = 0;
        if (!lookup.Nearest_StartList(ref postcode, ref kilometres, ref longitude, ref latitude, ref box))
        {
            Console.Error.WriteLine($"{postcode} was not found: {lookup.General_errormessage}");
            return 1;
        }
        string name, telephone = "", spare = "";
        foreach (var place in Places)
        {
            name = place.Name;
            longitude = place.Longitude;
            latitude = place.Latitude;
            lookup.Nearest_AddToList(ref longitude, ref latitude, ref name, ref telephone, ref spare);
        }
        int count = lookup.Nearest_GetNumberOfRecordsReturned();
        for (int i = 1; i <= count; i++)
        {
            double distance = 0;
            name = "";
            if (lookup.Nearest_GetRecord(ref i, ref distance, ref longitude, ref latitude, ref name, ref telephone, ref spare))
                Console.WriteLine($"{i}. {name}: {distance.ToString("0.0", CultureInfo.InvariantCulture)} km");
        }
        lookup.Nearest_EndList();
        return count > 0 ? 0 : 1;
    }
}
