// A small application on the installed library, in the family's manner: it
// names itself in the process dictionary, keeps its customers in a record
// file with an index, reads its settings from an INI file, prints a date and
// an IBAN, and greets from its own string table (demo.rc).
#include <cstdio>
#include <initializer_list>

#include "nvk/calendar/cbdate.h"
#include "nvk/codes/iban.h"
#include "nvk/config/ini_file.h"
#include "nvk/core/chaine.h"
#include "nvk/services/app_identity.h"
#include "nvk/services/global_dico.h"
#include "nvk/storage/data_file.h"
#include "nvk/storage/index_file.h"

namespace {

constexpr unsigned kGreeting = 20001;  // in demo.rc

struct Customer {
    char code[8];
    char name[24];
};

// Files the customers under their codes and lists them in code order; the
// record file and its index are files of the current folder.
void Customers() {
    EDataFile records;
    EIndexFile index;
    records.Create("customers.dat", sizeof(Customer));
    auto* customer = static_cast<Customer*>(records.Open("customers.dat"));
    index.Create("customers.idx", 512);
    index.Open("customers.idx");
    const int byCode = index.CreateIndex(sizeof customer->code, 0, 0);
    for (const Customer& c :
         {Customer{"C0042", "Boulangerie Favre"}, Customer{"C0007", "Garage du Lac"}}) {
        *customer = c;
        records.Insere(nullptr, 0);
        index.Insere(byCode, customer->code, records.Courant());
    }
    for (unsigned long n = index.First(byCode); n != 0; n = index.Next()) {
        records.Read(n, nullptr);
        std::printf("customer %s: %s\n", customer->code, customer->name);
    }
    index.Close();
    records.Close();
}

}  // namespace

int main() {
    GlobalDico::Get().SetValue(DicoKeys::AppShortName, "DEMO");
    GlobalDico::Get().SetValue(DicoKeys::AppName, "nvkutil demo");
    std::printf("application %s (%s)\n", GetShortName().c_str(), GetAppName().c_str());

    Customers();

    EIniFile settings;
    settings.ReadInData("[Dossier]\nName=Fiduciaire Roux\nExercice=2014\n");
    char name[64];
    settings.GetPrivateProfileStringA("Dossier", "Name", "", name, sizeof name, "");
    std::printf("dossier %s, exercice %d\n", name,
                settings.GetPrivateProfileIntA("Dossier", "Exercice", 0, ""));

    std::printf("date %s\n", CBDate(5, 3, 2014).AsString().GetString());
    std::printf("IBAN %s\n",
                EIBAN("fr76 3000 6000 0112 3456 7890 189").GetIBAN_Printable().c_str());

    Chaine greeting;
    greeting.LoadString(kGreeting);
    std::printf("%s\n", greeting.c_str());
    return greeting.IsEmpty() ? 1 : 0;
}
