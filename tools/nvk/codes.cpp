// nvk iban | rib | bic | nir: the bank and identity codes.
#include <cstring>
#include <iostream>
#include <string>

#include "cli.h"
#include "nvk/codes/bic.h"
#include "nvk/codes/iban.h"
#include "nvk/codes/nir.h"
#include "nvk/codes/rib.h"
#include "nvk/codes/swiss_account.h"

namespace nvk::tool {
namespace {

// A code may be typed in groups: the words join again with blanks.
Chaine Joined(const Args& args) {
    std::string text;
    for (const std::string& word : args) {
        text += (text.empty() ? "" : " ") + word;
    }
    return Chaine(text.data(), static_cast<int>(text.size()));
}

int Answer(bool valid) {
    std::cout << (valid ? "valid" : "invalid") << '\n';
    return valid ? kOk : kNegative;
}

constexpr std::string_view kValidity =
    "answers: \"valid\" (exit 0) or \"invalid\" (exit 1); usage errors exit 2.";

// The fields of a RIB are copied unchecked, so their lengths are tested here.
bool FitsRib(const Args& args) {
    static constexpr std::size_t kMax[] = {5, 5, 11, 2};
    for (std::size_t i = 0; i < args.size(); ++i) {
        if (args[i].size() > kMax[i]) {
            return false;
        }
    }
    return true;
}

// --- iban

int IbanCheck(const Args& args);
int IbanShow(const Args& args);
int IbanFromRib(const Args& args);
int IbanFromSwiss(const Args& args);

constexpr std::string_view kIbanOfAccount =
    "answers: the IBAN in its electronic form (exit 0), or \"invalid\" (exit 1) when the\n"
    "account gives no valid IBAN; fields longer than the record's are a usage error (exit 2).";

const Command kIbanCommands[] = {
    {"check", "TEXT | -", "prints valid or invalid", IbanCheck, kValidity},
    {"show", "TEXT | -",
     "prints the fields, the electronic and printable forms and the validity; the text is read "
     "as partial input",
     IbanShow,
     "answers: six lines (country, check, content, electronic, printable, validity), or with -\n"
     "one line a number, the six fields separated by tabs; exit 0 when valid, 1 when not."},
    {"from-rib", "AGENCE GUICHET COMPTE CLE | -", "prints the IBAN of a French account",
     IbanFromRib, kIbanOfAccount},
    {"from-swiss", "CLEARING COMPTE | -", "prints the IBAN of a Swiss account", IbanFromSwiss,
     kIbanOfAccount},
};

// An empty line of input is an empty code: invalid.
int IbanCheckOne(const Args& args) {
    return Answer(!args.empty() && EIBAN(Joined(args)).IsValid());
}

int IbanCheck(const Args& args) {
    if (!Expect(args, 1, 64, kIbanCommands[0])) {
        return kFailure;
    }
    return PerInput(args, IbanCheckOne);
}

int IbanShowOne(const Args& args) {
    // Taken as partial input, so that a half-typed number shows its parts.
    const EIBAN iban(Joined(args), true);
    const char* validity = iban.IsValid() ? "valid" : "invalid";
    if (ReadingInput()) {
        std::cout << iban.szCountry << '\t' << iban.szCheckSum << '\t' << iban.szContent << '\t'
                  << iban.GetIBAN_EDI().c_str() << '\t' << iban.GetIBAN_Printable().c_str() << '\t'
                  << validity << '\n';
    } else {
        std::cout << "country    " << iban.szCountry << "\ncheck      " << iban.szCheckSum
                  << "\ncontent    " << iban.szContent << "\nelectronic "
                  << iban.GetIBAN_EDI().c_str() << "\nprintable  "
                  << iban.GetIBAN_Printable().c_str() << "\nvalidity   " << validity << '\n';
    }
    return iban.IsValid() ? kOk : kNegative;
}

int IbanShow(const Args& args) {
    if (!Expect(args, 1, 64, kIbanCommands[1])) {
        return kFailure;
    }
    return PerInput(args, IbanShowOne);
}

int PrintIban(const EIBAN& iban) {
    const Chaine edi = iban.GetIBAN_EDI();
    if (edi.IsEmpty()) {
        return Answer(false);
    }
    std::cout << edi.c_str() << '\n';
    return kOk;
}

int IbanFromRibOne(const Args& args) {
    if (args.size() != 4) {
        return Fail("four fields are expected: agence guichet compte cle");
    }
    if (!FitsRib(args)) {
        return Fail("the fields have at most 5, 5, 11 and 2 characters");
    }
    CRIB rib;
    rib.SetAgence(args[0].c_str());
    rib.SetGuichet(args[1].c_str());
    rib.SetCompte(args[2].c_str());
    rib.SetCle(args[3].c_str());
    return PrintIban(EIBAN(rib));
}

int IbanFromRib(const Args& args) {
    if (!Expect(args, 1, 4, kIbanCommands[2])) {
        return kFailure;
    }
    return PerInput(args, IbanFromRibOne);
}

int IbanFromSwissOne(const Args& args) {
    if (args.size() != 2) {
        return Fail("two fields are expected: clearing compte");
    }
    if (args[0].size() > 5 || args[1].size() > 12) {
        return Fail("the clearing has at most 5 characters and the account 12");
    }
    CSwissAccount account;
    account.SetClearing(args[0].c_str());
    account.SetCompte(args[1].c_str());
    return PrintIban(EIBAN(account));
}

int IbanFromSwiss(const Args& args) {
    if (!Expect(args, 1, 2, kIbanCommands[3])) {
        return kFailure;
    }
    return PerInput(args, IbanFromSwissOne);
}

void IbanDemo(std::ostream& out) {
    const EIBAN iban("fr76 3000 6000 0112 3456 7890 189");
    out << "  \"fr76 3000 6000 0112 3456 7890 189\" cleans to " << iban.GetIBAN_EDI().c_str()
        << ", printed " << iban.GetIBAN_Printable().c_str() << '\n';
    CRIB rib;
    rib.SetGuichet("00001");
    rib.SetCle("89");
    const EIBAN partial(rib);
    out << "  a French account with only counter and key keeps its gaps: " << partial.szCountry
        << partial.szCheckSum << partial.szContent << ", "
        << (partial.IsValid() ? "valid" : "invalid") << '\n';
    CSwissAccount swiss;
    swiss.SetClearing("762");
    swiss.SetCompte("011623852957");
    out << "  Swiss clearing 762, account 011623852957: " << EIBAN(swiss).GetIBAN_EDI().c_str()
        << '\n';
}

const RegisterArea kIbanArea({"iban", "international bank account numbers", kIbanCommands, IbanDemo,
                              90});

// --- rib

int RibKey(const Args& args);
int RibCheck(const Args& args);

const Command kRibCommands[] = {
    {"key", "AGENCE GUICHET COMPTE | -", "prints the key of a French account", RibKey,
     "answers: the two-digit key (exit 0); fields that do not make 21 digits or capital\n"
     "letters are an error (exit 2)."},
    {"check", "AGENCE GUICHET COMPTE CLE | -", "prints the answers of the exact and the older test",
     RibCheck,
     "answers: \"exact test: valid|invalid, older test: valid|invalid\"; exit 0 when both\n"
     "say valid, 1 otherwise."},
};

int RibKeyOne(const Args& args) {
    if (args.size() != 3) {
        return Fail("three fields are expected: agence guichet compte");
    }
    const CString key = CRIB::ExpectedKey(args[0].c_str(), args[1].c_str(), args[2].c_str());
    if (key.IsEmpty()) {
        return Fail("the fields must make 21 digits or capital letters");
    }
    std::cout << key.GetString() << '\n';
    return kOk;
}

int RibKey(const Args& args) {
    if (!Expect(args, 1, 3, kRibCommands[0])) {
        return kFailure;
    }
    return PerInput(args, RibKeyOne);
}

int RibCheckOne(const Args& args) {
    if (args.size() != 4) {
        return Fail("four fields are expected: agence guichet compte cle");
    }
    const bool exact =
        CRIB::TestRIBEx(args[0].c_str(), args[1].c_str(), args[2].c_str(), args[3].c_str()) != 0;
    const bool older =
        CRIB::TestRIB(args[0].c_str(), args[1].c_str(), args[2].c_str(), args[3].c_str()) != 0;
    std::cout << "exact test: " << (exact ? "valid" : "invalid")
              << ", older test: " << (older ? "valid" : "invalid") << '\n';
    return exact && older ? kOk : kNegative;
}

int RibCheck(const Args& args) {
    if (!Expect(args, 1, 4, kRibCommands[1])) {
        return kFailure;
    }
    return PerInput(args, RibCheckOne);
}

void RibDemo(std::ostream& out) {
    out << "  key of 30006 00001 12345678901: "
        << CRIB::ExpectedKey("30006", "00001", "12345678901").GetString() << '\n';
    // The older test reads a short account as the number it spells.
    const CString key = CRIB::ExpectedKey("30006", "00001", "01234567890");
    out << "  30006 00001 1234567890 " << key.GetString() << ": exact test "
        << (CRIB::TestRIBEx("30006", "00001", "1234567890", key) ? "valid" : "invalid")
        << ", older test "
        << (CRIB::TestRIB("30006", "00001", "1234567890", key) ? "valid" : "invalid") << '\n';
}

const RegisterArea kRibArea({"rib", "French bank account identities", kRibCommands, RibDemo, 91});

// --- bic

int BicCheck(const Args& args);

const Command kBicCommands[] = {
    {"check", "TEXT | -", "prints valid or invalid", BicCheck, kValidity},
};

int BicCheckOne(const Args& args) {
    return Answer(!args.empty() && EBIC(Joined(args)).IsValid());
}

int BicCheck(const Args& args) {
    if (!Expect(args, 1, 16, kBicCommands[0])) {
        return kFailure;
    }
    return PerInput(args, BicCheckOne);
}

void BicDemo(std::ostream& out) {
    EBIC bic("deut-de-ff");
    out << "  \"deut-de-ff\" gives " << bic.GetBIC().c_str() << ": IsValid "
        << (bic.IsValid() ? "true" : "false") << ", Validate "
        << (bic.Validate() ? "true" : "false") << " (no branch)\n";
}

const RegisterArea kBicArea({"bic", "bank identifier codes", kBicCommands, BicDemo, 92});

// --- nir

// The computed key is kept for the class and its kin.
class NirKey : public CNIR {
public:
    using CNIR::iGetModifiedNum;
    using CNIR::iGetValidKey;
};

int NirCheck(const Args& args);
int NirKeyCommand(const Args& args);

const Command kNirCommands[] = {
    {"check", "TEXT | -", "prints valid or invalid", NirCheck, kValidity},
    {"key", "NUMBER | -", "prints the key of a 13-character number", NirKeyCommand,
     "answers: the two-digit key (exit 0); a number that is not 13 digits, a Corsican\n"
     "department or PROVIS is an error (exit 2)."},
};

int NirCheckOne(const Args& args) {
    CNIR nir;
    return Answer(!args.empty() && nir.Set(Joined(args)));
}

int NirCheck(const Args& args) {
    if (!Expect(args, 1, 16, kNirCommands[0])) {
        return kFailure;
    }
    return PerInput(args, NirCheckOne);
}

int NirKeyOne(const Args& args) {
    if (args.size() != 1) {
        return Fail("one number is expected");
    }
    if (args[0].size() > 13) {
        return Fail("a number has at most 13 characters");
    }
    NirKey nir;
    nir.Set(args[0].c_str());
    const Chaine digits = nir.iGetModifiedNum();
    if (std::strspn(digits.c_str(), "0123456789") != static_cast<std::size_t>(digits.Length())) {
        return Fail("a number is made of digits, a Corsican department or PROVIS");
    }
    const int key = nir.iGetValidKey();
    std::cout << (key < 10 ? "0" : "") << key << '\n';
    return kOk;
}

int NirKeyCommand(const Args& args) {
    if (!Expect(args, 1, 1, kNirCommands[1])) {
        return kFailure;
    }
    return PerInput(args, NirKeyOne);
}

void NirDemo(std::ostream& out) {
    NirKey nir;
    nir.Set("185052A006084");
    out << "  key of 185052A006084 (Corsica, counted as 19): " << nir.iGetValidKey() << '\n';
    nir.Set("1PROVIS000012");
    out << "  key of the provisional 1PROVIS000012: " << nir.iGetValidKey() << ", shown unkeyed as "
        << nir.GetDisplay('-').c_str() << '\n';
}

const RegisterArea kNirArea({"nir", "French social-security numbers", kNirCommands, NirDemo, 93});

}  // namespace
}  // namespace nvk::tool
