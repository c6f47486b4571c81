#!/usr/bin/env python3
"""Writes src/os/win32/layout_check.cpp: compile-time proof, in the Windows
build, that the OS layer's types and constants are Windows' own. The layer's
structs are handed to the system by reinterpret_cast (src/os/win32/forward.h),
so a field out of place or a constant off by one would pass silently. For
every struct or union of nvk::os that Windows names too, the file asserts the
same size, alignment and offset of each field of the same name, and the size
of that field; for every integer constant of nvk::os that Windows names (a
macro, an enumerator or a constant), the same value; for every other type
name of nvk::os that Windows names (numbers, characters, handles, pointers to
them and callbacks), the very same type, so that a program's values of
<windows.h> pass to the layer unchanged.

Reads the layer's headers through the forwarder script's syntax tree, and
Windows' headers (those that src/os/win32/forward.h includes) through
clang's too, both parsed for the mingw target.

Run from the source tree after changing a type or constant of the OS layer:
    scripts/win32_layout_check.py | clang-format --assume-filename=layout_check.cpp \
        > src/os/win32/layout_check.cpp
"""
import json
import re
import sys

from win32_forwarders import LAYER_HEADERS, MINGW, clang, layer_tree

# The layer's constants that Windows also names but that are deliberately the
# layer's own values, with the reason.
OWN = {
    "QS_ALLINPUT": "Windows' headers give 0x04FF below Windows 8 and 0x1CFF (with QS_TOUCH and"
                   " QS_POINTER) from it; the layer has neither input and keeps the value every"
                   " version accepts",
}
# The layer's type names that Windows also names but that deliberately stay the
# layer's own type, with the reason.
TYPES = {
    "FARPROC": "the layer's entry points are void (*)(), which any function pointer type is"
               " cast from and to without a warning; Windows' return an INT_PTR",
}
# The layer's structs that deliberately differ from Windows' in size: how the
# layer's size and alignment compare with Windows' (None: not at all), and why.
LAYOUTS = {
    "CRITICAL_SECTION": (">=", "opaque storage, large enough for the POSIX backend's mutex"
                               " and for Windows' own"),
    "EMREXTCREATEFONTINDIRECTW": ("<=", "the record's short form, with a LOGFONTW where Windows"
                                        " declares an EXTLOGFONTW; players read either"),
    "ITEMIDLIST": (None, "the layer's item list holds a path, Windows' shell ids; the library"
                         " only hands pointers to them from one call to the next"),
}
INTEGERS = {"char", "signed char", "unsigned char", "short", "unsigned short", "int",
            "unsigned int", "long", "unsigned long", "long long", "unsigned long long",
            "char8_t", "char16_t", "char32_t", "wchar_t"}


def windows_includes():
    with open("src/os/win32/forward.h") as header:
        return "".join(line for line in header if re.match(r"#include <", line)
                       and "<type_traits>" not in line)


def fields(record, prefix=""):
    """The names of a record's fields, those of its anonymous members and of
    the members of its fields of unnamed type (as `u.LowPart`) included, and
    of those it cannot take the offset of (bit-fields)."""
    names, bits, unnamed = [], [], None
    for child in record.get("inner", []):
        kind = child.get("kind")
        if kind in ("RecordDecl", "CXXRecordDecl") and not child.get("name"):
            unnamed = child
        elif kind in ("FieldDecl", "IndirectFieldDecl") and child.get("name"):
            name = prefix + child["name"]
            (bits if child.get("isBitfield") else names).append(name)
            if unnamed and "unnamed " in child.get("type", {}).get("qualType", ""):
                inner_names, inner_bits = fields(unnamed, name + ".")
                names += inner_names
                bits += inner_bits
    return names, bits


def layer():
    """The layer's complete records, integer constants (enumerators too),
    pointer constants and type names (with the type each stands for)."""
    records, constants, pointers, enums, aliases = {}, {}, [], set(), {}

    def walk(node, names):
        if node.get("kind") == "NamespaceDecl":
            names = names + [node.get("name", "")]
        kind = node.get("kind")
        if names == ["nvk", "os"] and kind != "NamespaceDecl":
            if kind == "CXXRecordDecl" and node.get("completeDefinition") and node.get("name"):
                records[node["name"]] = node
            elif kind in ("TypeAliasDecl", "TypedefDecl"):
                aliases[node["name"]] = node["type"].get("desugaredQualType",
                                                         node["type"]["qualType"])
            elif kind == "EnumDecl":
                enums.add(f"nvk::os::{node.get('name')}")
                constants.update((c["name"], "enum") for c in node.get("inner", [])
                                 if c.get("kind") == "EnumConstantDecl")
            elif kind == "VarDecl" and node.get("inline"):
                qual = node["type"].get("desugaredQualType", node["type"]["qualType"])
                base = qual.removeprefix("const ").strip()
                if node.get("constexpr") and (base in INTEGERS or base in enums):
                    constants[node["name"]] = base
                elif "*" in qual:
                    pointers.append(node["name"])
            return
        for child in node.get("inner", []) or []:
            walk(child, names)

    walk(layer_tree(), [])
    return records, constants, pointers, aliases


def top_level(text):
    """Each declaration of a dumped translation unit, one at a time: the whole
    dump of Windows' headers is too large to hold as one tree."""
    decoder = json.JSONDecoder()
    at = text.index('"inner": [') + len('"inner": [')
    while True:
        while text[at] in " \n\r\t,":
            at += 1
        if text[at] == "]":
            return
        node, at = decoder.raw_decode(text, at)
        yield node


def windows():
    """Windows' records by name (tag or typedef), the names it gives
    numbers (macros, enumerators and constants), and its type names."""
    source = windows_includes()
    # Windows' headers take their intrinsics from clang's own headers.
    system = (MINGW,)
    macros = set(re.findall(r"^#define (\w+)[ \n]",
                            clang(source, ["-E", "-dM"], system), re.M))
    text = clang(source, ["-Xclang", "-ast-dump=json", "-fsyntax-only"], system)
    by_id, names, numbers, typedefs = {}, {}, set(), set()

    def visit(node):
        kind = node.get("kind")
        if kind in ("RecordDecl", "CXXRecordDecl") and node.get("completeDefinition"):
            by_id[node["id"]] = node
            if node.get("name"):
                names[node["name"]] = node["id"]
        elif kind == "TypedefDecl":
            typedefs.add(node["name"])
            target = (node.get("inner") or [{}])[0]
            while target.get("kind") in ("ElaboratedType", "TypedefType", "ParenType"):
                target = (target.get("inner") or [{}])[0]
            if target.get("kind") == "RecordType":
                names.setdefault(node["name"], target["decl"]["id"])
        elif kind == "EnumDecl":
            numbers.update(c["name"] for c in node.get("inner", []) if c.get("name"))
        elif kind == "VarDecl":
            numbers.add(node["name"])
        # Declarations inside extern "C" blocks, and records and enums inside records.
        for child in node.get("inner", []) or []:
            if kind == "LinkageSpecDecl" or child.get("kind") in (
                    "RecordDecl", "CXXRecordDecl", "EnumDecl", "LinkageSpecDecl"):
                visit(child)

    for node in top_level(text):
        visit(node)
    records = {name: by_id[i] for name, i in names.items() if i in by_id}
    return records, macros, numbers, typedefs


def own_structs(aliases):
    """The layer's type names that stand for one of its structs, or for a
    pointer, reference or callback taking one: those are the layer's own."""
    def of_struct(name, seen=()):
        if name not in aliases:
            return True
        return name not in seen and any(
            of_struct(used, seen + (name,))
            for used in re.findall(r"nvk::os::(\w+)", aliases[name]))
    return {name for name in aliases if of_struct(name)}


def main():
    ours, constants, pointers, aliases = layer()
    theirs, macros, numbers, typedefs = windows()
    out = sys.stdout
    out.write("// Generated by scripts/win32_layout_check.py: proves, as the Windows build\n"
              "// compiles, that the OS layer's structs have Windows' sizes, alignments,\n"
              "// field offsets and field sizes, and its constants Windows' values.\n")
    out.write("".join(f'#include "{h.removeprefix("include/").removeprefix("src/")}"\n'
                      for h in LAYER_HEADERS))
    # A name that the mingw headers lack may still be one of Windows' macros.
    checked = [n for n in sorted(constants) if n not in OWN]
    out.write("\n#include <cstddef>\n#include <cstdint>\n#include <type_traits>\n#include <utility>\n\n"
              "namespace nvk::os::layout {\n\n"
              "// The layer's values, taken before <windows.h> makes macros of their names.\n")
    for name in checked:
        out.write(f"inline constexpr auto {name}_ = nvk::os::{name};\n")
    out.write("\n// The same bits in the width of the layer's type, with nothing of Windows'\n"
              "// value lost to that width: a negative value equals its unsigned pattern.\n"
              "template <class Ours, class Theirs>\n"
              "constexpr bool SameValue(Ours ours, Theirs theirs) {\n"
              "    using Number = typename std::conditional_t<std::is_enum_v<Ours>,\n"
              "        std::underlying_type<Ours>, std::type_identity<Ours>>::type;\n"
              "    using Bits = std::make_unsigned_t<Number>;\n"
              "    const auto wide = static_cast<std::uint64_t>(theirs);\n"
              "    const auto narrow = static_cast<Bits>(wide);\n"
              "    const auto negative = static_cast<std::uint64_t>(\n"
              "        static_cast<std::int64_t>(static_cast<std::make_signed_t<Bits>>(narrow)));\n"
              "    return narrow == static_cast<Bits>(ours) && (wide == narrow || wide == negative);\n"
              "}\n\n}  // namespace nvk::os::layout\n\n"
              '#include "os/win32/forward.h"\n\n')

    mismatched, structs, offsets = [], 0, 0
    for name in sorted(ours):
        if name not in theirs:
            continue
        relation, reason = LAYOUTS.get(name, ("==", ""))
        if reason:
            out.write(f"\n// {name}: {reason}.\n")
        if relation is None:
            continue
        structs += 1
        mine, bits = fields(ours[name])
        other, other_bits = fields(theirs[name])
        only_ours = [f for f in mine + bits if f not in other + other_bits]
        only_theirs = [f for f in other + other_bits if f not in mine + bits]
        if only_ours or only_theirs:
            mismatched.append(name)
            out.write(f"\n// {name}: fields named otherwise, not compared by offset: ours "
                      f"{', '.join(only_ours) or '-'}; Windows' {', '.join(only_theirs) or '-'}.\n")
        out.write(f"static_assert(sizeof(nvk::os::{name}) {relation} sizeof(::{name}));\n"
                  f"static_assert(alignof(nvk::os::{name}) {relation} alignof(::{name}));\n")
        standard = ours[name].get("definitionData", {}).get("isStandardLayout", True)
        for field in mine:
            if field in other and standard:
                offsets += 1
                out.write(f"static_assert(offsetof(nvk::os::{name}, {field}) == "
                          f"offsetof(::{name}, {field}));\n"
                          f"static_assert(sizeof(std::declval<nvk::os::{name}&>().{field}) "
                          f"{relation} sizeof(std::declval<::{name}&>().{field}));\n")
        if bits:
            out.write(f"// {name}: bit-fields {', '.join(bits)} have no offset; its size covers them.\n")

    out.write("\n")
    for name in checked:
        guard = name not in numbers
        if guard:
            out.write(f"#ifdef {name}\n")
        out.write(f"static_assert(nvk::os::layout::SameValue(nvk::os::layout::{name}_, {name}));\n")
        if guard:
            out.write("#endif\n")
    structural = own_structs(aliases)
    shared = sorted(n for n in aliases if n in typedefs and n not in TYPES)
    out.write("\n// The layer's numbers, characters, handles and callbacks are Windows' own.\n")
    for name in (n for n in shared if n not in structural):
        out.write(f"static_assert(std::is_same_v<nvk::os::{name}, ::{name}>);\n")
    if any(n in structural for n in shared):
        out.write("\n// Standing for the layer's own structs, which share only their layout with\n"
                  "// Windows':\n"
                  f"//   {', '.join(n for n in shared if n in structural)}.\n")
    for name in sorted(n for n in TYPES if n in aliases):
        out.write(f"\n// {name}: {TYPES[name]}.\n")
    skipped = sorted(n for n in pointers if n in macros or n in numbers)
    if skipped:
        out.write("\n// Pointers on both sides, whose numbers no constant expression gives back:\n"
                  f"//   {', '.join(skipped)}.\n")
    for name in sorted(n for n in OWN if n in constants):
        out.write(f"\n// {name}: {OWN[name]}.\n")
    print(f"{structs} structs, {offsets} field offsets, {len(checked)} constants, "
          f"{len([n for n in shared if n not in structural])} types; "
          f"fields named otherwise in {', '.join(mismatched) or 'none'}", file=sys.stderr)


if __name__ == "__main__":
    main()
