#!/usr/bin/env python3
"""Make an accounting dossier for the archiving benchmarks.

The dossier is the folder given on the command line: a main file, "infos.btr"
and a few "*.nvk" files at the top, files that stay out of a dossier archive
(lock files, backups, notes), and one data folder per exercise, named after the
application's short name with the year as extension (COMPTA.2019, ...), each
with sub-folders. The data is mostly accounting-like records, which compress
well (ledger lines as text, fixed-width binary records), and some
incompressible blobs (scanned vouchers). The same seed gives the same bytes.

Prints the path of the main file, which is what `nvk dossier zip` takes.
"""

import argparse
import os
import random
import struct
import sys

JOURNALS = ["VT", "AC", "BQ1", "BQ2", "OD", "CA", "AN"]
ACCOUNTS = ["401000", "411000", "445660", "445710", "512000", "530000", "601000",
            "606100", "613200", "616000", "622600", "625100", "626000", "641000",
            "645100", "701000", "706000", "708500", "758000", "768000"]
NAMES = ["DUPONT SA", "MARTIN SARL", "BERNARD ET FILS", "PETIT TRANSPORTS",
         "DURAND CONSEIL", "LEROY IMMOBILIER", "MOREAU & CIE", "FOURNIER BTP",
         "GIRARD INFORMATIQUE", "BONNET AUTOMOBILES", "MUELLER AG", "SCHMID GMBH",
         "KELLER TREUHAND", "WEBER HOLZBAU", "FISCHER LOGISTIK"]
LABELS = ["Facture", "Avoir", "Reglement", "Virement", "Prelevement", "Cheque",
          "Remise", "Loyer", "Salaires", "Cotisations", "Frais bancaires",
          "Honoraires", "Fournitures", "Carburant", "Telephone"]

# What a dossier folder holds besides its data; the excluded ones must not
# reach an archive.
TOP_FILES = ["infos.btr", "params.nvk", "users.nvk", "filters.nvkfilters",
             "dossier.lck", "journal.bak", "notes.txt", "ancien.zip"]
SUB_FOLDERS = ["", "Journaux", "Grand-livre", "Tiers", "Immobilisations",
               "Editions", "Pieces"]


def ledger_text(rng, year, size):
    """Ledger lines separated by CR LF, as the applications export them."""
    out = []
    total = 0
    piece = rng.randrange(1, 5000)
    while total < size:
        piece += rng.randrange(1, 3)
        line = "%04d-%02d-%02d;%s;%s;%s;%s %s;F%d-%05d;%d.%02d;%d.%02d\r\n" % (
            year, rng.randrange(1, 13), rng.randrange(1, 29), rng.choice(JOURNALS),
            rng.choice(ACCOUNTS), rng.choice(NAMES), rng.choice(LABELS),
            rng.choice(NAMES).split()[0].title(), year, piece,
            rng.randrange(0, 20000), rng.randrange(100), 0, 0)
        out.append(line)
        total += len(line)
    return "".join(out).encode("cp1252")[:size]


RECORD = struct.Struct("<IHH8s32s12sqqI18s")  # 96 bytes, like a data file's record


def ledger_records(rng, year, size):
    """Fixed-width binary records: numbers, padded names, blank reserved bytes."""
    out = bytearray()
    key = rng.randrange(1, 1000)
    while len(out) < size:
        key += 1
        out += RECORD.pack(key, year, rng.randrange(1, 366),
                           rng.choice(ACCOUNTS).encode(), rng.choice(NAMES).encode(),
                           rng.choice(JOURNALS).encode(),
                           rng.randrange(-10**8, 10**8), rng.randrange(0, 10**6),
                           rng.randrange(0, 4), b"")
    return bytes(out[:size])


def sizes(rng, count, total):
    """count sizes with a long tail, summing to total."""
    weights = [rng.lognormvariate(0, 1.2) for _ in range(count)]
    scale = total / sum(weights)
    result = [max(1, int(w * scale)) for w in weights]
    result[0] += total - sum(result)
    return result


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("folder", help="dossier folder to create (or fill)")
    parser.add_argument("--files", type=int, default=2000, help="files in the archive (2000)")
    parser.add_argument("--megabytes", type=float, default=300, help="data size (300)")
    parser.add_argument("--blobs", type=float, default=0.15,
                        help="share of the bytes in incompressible blobs (0.15)")
    parser.add_argument("--short-name", default="COMPTA", help="application short name")
    parser.add_argument("--exercises", type=int, default=5, help="exercise folders (5)")
    parser.add_argument("--seed", type=int, default=2012)
    args = parser.parse_args()

    rng = random.Random(args.seed)
    root = os.path.abspath(args.folder)
    os.makedirs(root, exist_ok=True)
    total = int(args.megabytes * 1024 * 1024)

    main_name = os.path.basename(root.rstrip(os.sep)) or "DOSSIER"
    main_file = os.path.join(root, main_name + ".cpt")
    with open(main_file, "wb") as f:
        f.write(b"[General]\r\nNVKKey=0102030405060708\r\nRaisSoc=%s\r\n"
                % main_name.encode("cp1252", "replace"))
        f.write(ledger_records(rng, 2012, 64 * 1024))
    for name in TOP_FILES:
        with open(os.path.join(root, name), "wb") as f:
            f.write(ledger_text(rng, 2012, rng.randrange(200, 20000)))

    # The archived files: the main file, infos.btr, *.nvk, and the data files.
    data_files = max(1, args.files - 4)
    first_year = 2024 - args.exercises
    blob_count = max(1, data_files // 20) if args.blobs > 0 else 0
    blob_bytes = int(total * args.blobs) if blob_count else 0
    record_sizes = sizes(rng, data_files - blob_count, total - blob_bytes)
    blob_sizes = sizes(rng, blob_count, blob_bytes) if blob_count else []
    jobs = [("rec", s) for s in record_sizes] + [("blob", s) for s in blob_sizes]
    rng.shuffle(jobs)
    for number, (kind, size) in enumerate(jobs):
        year = first_year + number % args.exercises
        folder = os.path.join(root, "%s.%d" % (args.short_name, year),
                              SUB_FOLDERS[number % len(SUB_FOLDERS)])
        os.makedirs(folder, exist_ok=True)
        if kind == "blob":
            name, data = "scan%05d.pdf" % number, rng.randbytes(size)
        elif number % 2:
            name, data = "ecr%05d.txt" % number, ledger_text(rng, year, size)
        else:
            name, data = "ecr%05d.dat" % number, ledger_records(rng, year, size)
        with open(os.path.join(folder, name), "wb") as f:
            f.write(data)
    print(main_file)
    return 0


if __name__ == "__main__":
    sys.exit(main())
