#!/usr/bin/env python3
"""Makes the functions of the layer from what objects leave to others: make_layer.py FAILURES OUTPUT.S OBJECTS...

A function that failures.txt does not know is an error.
"""
import re
import subprocess
import sys

# Of these libraries' functions each has to be in the list.
LIBRARIES = re.compile(r"LIB(AV|SW)|GLIBC_")

ENTRY = """
    .globl {name}
    .type {name}, @function
{name}:
    endbr64
    movl ${index}, %r11d
    jmp decide
"""
# Saves what arguments come in, asks, and goes on where the answer says.
SAVED = ["rax", "rdi", "rsi", "rdx", "rcx", "r8", "r9", "r10"]
DECIDE = "\n".join(
    ["decide:", "    pushq %rbp", "    movq %rsp, %rbp"]
    + [f"    pushq %{name}" for name in SAVED]
    + ["    subq $128, %rsp"]
    + [f"    movups %xmm{n}, {n * 16}(%rsp)" for n in range(8)]
    + ["    movl %r11d, %edi", "    leaq 8(%rbp), %rsi", "    call FaultDecide", "    movq %rax, %r11"]
    + [f"    movups {n * 16}(%rsp), %xmm{n}" for n in range(8)]
    + ["    addq $128, %rsp"]
    + [f"    popq %{name}" for name in reversed(SAVED)]
    + ["    popq %rbp", "    jmp *%r11", ""]
)


def known(path):
    """name -> (kind, whose)"""
    found = {}
    for line in open(path, encoding="utf-8"):
        words = line.split("#")[0].split()
        if not words:
            continue
        kind, rest = words[0], words[1:]
        whose = rest.pop(0) if kind != "-" else ""
        for name in rest:
            if name in found:
                sys.exit(f"{path}: {name} stands twice")
            found[name] = (kind, whose)
    return found


def undefined(objects):
    """The names that come from the libraries that are listed, and those of operator new."""
    names = set()
    for path in objects:
        table = subprocess.run(["nm", "-D", "-u", path], capture_output=True, text=True, check=True).stdout
        for line in table.splitlines():
            name, _, version = line.split()[-1].partition("@")
            if LIBRARIES.match(version) or name.startswith(("_Znw", "_Zna")):
                names.add(name)
    return names


def main(failures, output, *objects):
    ways = known(failures)
    names = undefined(objects)
    if missing := sorted(names - ways.keys()):
        sys.exit(f"{failures} does not say how these fail: {' '.join(missing)}")
    chosen = sorted(name for name, (kind, whose) in ways.items() if kind != "-" and (name in names or whose != "ours"))
    with open(output, "w", encoding="utf-8") as file:
        file.write("    .text\n" + DECIDE)
        for index, name in enumerate(chosen):
            file.write(ENTRY.format(name=name, index=index))
        file.write("    .section .rodata\n    .globl kLayerFunctions\n")
        file.write(f"kLayerFunctions: .long {len(chosen)}\n")
        for index, name in enumerate(chosen):
            kind, whose = ways[name]
            file.write(f'name{index}: .string "{name}"\nkind{index}: .string "{kind}{whose}"\n')
        file.write("    .section .data.rel.ro, \"aw\"\n    .balign 8\n")
        for table, prefix in (("kLayerNames", "name"), ("kLayerKinds", "kind")):
            file.write(f"    .globl {table}\n{table}:\n")
            file.writelines(f"    .quad {prefix}{index}\n" for index in range(len(chosen)))
        file.write('    .section .note.GNU-stack, "", @progbits\n')


main(*sys.argv[1:])
