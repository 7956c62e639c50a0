"""Small ELF files that hold every kind of section that the reader looks into."""
import struct

SYMTAB, STRTAB, RELA, HASH, DYNAMIC, NOTE, NOBITS, REL, DYNSYM = 2, 3, 4, 5, 6, 7, 8, 9, 11
INIT_ARRAY, GROUP, SHNDX, GNU_HASH = 14, 17, 18, 0x6FFFFFF6
VERDEF, VERNEED, VERSYM = 0x6FFFFFFD, 0x6FFFFFFE, 0x6FFFFFFF
PREEMPTION, ATTRIBUTES, OVERLAY = 0x70000002, 0x70000003, 0x70000004
BASE = 0x10000


class Elf:
    """One file: sections are added, bytes() lays them out."""

    def __init__(self, wide, little, kind, unit=1):
        self.wide, self.kind = wide, kind
        self.unit = unit  # sections start at multiples of it
        self.order = "<" if little else ">"
        self.sections = [dict(name=b"", type=0)]
        self.segments = []

    def pack(self, form, *values):
        return struct.pack(self.order + form, *values)

    def words(self, *values):
        return self.pack("%dI" % len(values), *values)

    def addresses(self, *values):
        return self.pack("%d%s" % (len(values), "Q" if self.wide else "I"), *values)

    def add(self, name, kind, data=b"", **fields):
        self.sections.append(dict(name=name, type=kind, data=data, **fields))
        return len(self.sections) - 1

    def symbol(self, name, info, index, value=0, size=0):
        if self.wide:
            return self.pack("IBBHQQ", name, info, 0, index, value, size)
        return self.pack("IIIBBH", name, value, size, info, 0, index)

    def relocation(self, offset, symbol, addend=None):
        info = symbol << 32 | 1 if self.wide else symbol << 8 | 1
        return self.addresses(offset, info, *([] if addend is None else [addend]))

    def header(self, section, name, offset):
        size = section.get("size", len(section.get("data", b"")))
        flags, link, info = (section.get(key, 0) for key in ("flags", "link", "info"))
        address = BASE + offset if flags & 2 and self.kind != 1 else section.get("address", 0)
        entry = section.get("entry", 0)
        form = "IIQQQQIIQQ" if self.wide else "10I"
        alignment = 1
        if section["type"] == 0:
            name = offset = alignment = 0
        return self.pack(form, name, section["type"], flags, address, offset, size, link, info,
                         alignment, entry)

    def segment(self, kind, offset, size, memory):
        if self.wide:
            return self.pack("IIQQQQQQ", kind, 7, offset, BASE + offset, 0, size, memory, 1)
        return self.pack("8I", kind, offset, BASE + offset, 0, size, memory, 7, 1)

    def sizes(self):
        """Those of the ELF header, of a program header and of a section header."""
        return (64, 56, 64) if self.wide else (52, 32, 40)

    def offset(self, section, segments):
        """Where a section will lie in a file of so many segments."""
        header_size, segment_size, _ = self.sizes()
        offset = header_size + segments * segment_size
        return self.rounded(offset) + sum(
            self.rounded(len(other.get("data", b""))) for other in self.sections[:section])

    def rounded(self, size):
        return -(-size // self.unit) * self.unit

    def padded(self, data):
        return data.ljust(self.rounded(len(data)), b"\0")

    def bytes(self):
        self.add(b".shstrtab", STRTAB, b"\0" + b"".join(s["name"] + b"\0" for s in self.sections))
        self.sections[-1]["data"] += b".shstrtab\0"
        header_size, segment_size, section_size = self.sizes()
        offsets = [self.offset(i, len(self.segments)) for i in range(len(self.sections) + 1)]
        body = b"".join(self.padded(section.get("data", b"")) for section in self.sections)
        table, name = b"", 1
        for section, offset in zip(self.sections, offsets):
            table += self.header(section, name, offset)
            name += len(section["name"]) + 1
        segments = b""
        for kind, first, last in self.segments:
            start = offsets[first] if first else 0
            size = offsets[last] + len(self.sections[last].get("data", b"")) - start
            segments += self.segment(kind, start, size, size + self.sections[last].get("size", 0))
        ident = b"\x7fELF" + bytes([2 if self.wide else 1, 1 if self.order == "<" else 2, 1])
        form = "HHIQQQIHHHHHH" if self.wide else "HHIIIIIHHHHHH"
        header = ident.ljust(16, b"\0") + self.pack(
            form, self.kind, 183 if self.wide else 40, 1, 0, header_size if segments else 0,
            offsets[-1], 0, header_size, segment_size, len(self.segments),
            section_size, len(self.sections), len(self.sections) - 1)
        return self.padded(header + segments) + body + table


def add_symbols(elf, text):
    strings = elf.add(b".strtab", STRTAB, b"\0one\0two\0BuildAttributes$$REQ8\0")
    table = b"".join((elf.symbol(0, 0, 0), elf.symbol(1, 0x12, text, 0, 4),
                      elf.symbol(5, 0x10, 0xFFFF), elf.symbol(9, 0x10, 0xFFF1),
                      elf.symbol(1, 0x03, text), elf.symbol(5, 0x10, 0xFFF2, 8)))
    symbols = elf.add(b".symtab", SYMTAB, table, link=strings, info=1)
    elf.add(b".shndx", SHNDX, elf.words(0, 0, text, 0, 0, 0), link=symbols)
    return symbols


def relocatable(wide, little):
    elf = Elf(wide, little, 1)
    text = elf.add(b".text", 1, b"code", flags=0x202)
    elf.add(b".bss", NOBITS, size=64)
    debug = elf.add(b".debug_info", 1, b"debug")
    symbols = add_symbols(elf, text)
    elf.add(b".rel", REL, elf.relocation(0, 1), link=symbols, info=text)
    elf.add(b".rela", RELA, elf.relocation(4, 2, 9), link=symbols, info=text)
    elf.add(b".group", GROUP, elf.words(1, text), link=symbols, info=1)
    entry = 16 if wide else 12
    elf.add(b".overlay", OVERLAY, elf.addresses(1) + elf.words(debug, text), entry=entry)
    stream = b"\6\2\5CPU\0"
    scope = bytes([1]) + elf.words(5 + len(stream)) + stream
    vendor = elf.words(4 + 6 + len(scope)) + b"qeabi\0" + scope
    elf.add(b".attributes", ATTRIBUTES, b"A" + vendor)
    return elf.bytes()


def plain(wide, little):
    """An object with nothing but what compilers make of a small module."""
    elf = Elf(wide, little, 1)
    text = elf.add(b".text", 1, b"code and data", flags=6)
    inline = elf.add(b".text.f", 1, b"inline", flags=0x206)
    elf.add(b".data", 1, b"data", flags=3)
    elf.add(b".bss", NOBITS, size=64, flags=3)
    elf.add(b".rodata", 1, b"constants", flags=2)
    elf.add(b".debug_line", 1, b"lines")
    elf.add(b".note", NOTE, elf.words(4, 4, 1) + b"GNU\0" + elf.words(7), flags=2)
    strings = elf.add(b".strtab", STRTAB, b"\0f\0$a\0$d.realdata\0printf\0")
    table = b"".join((elf.symbol(0, 0, 0), elf.symbol(0, 3, text), elf.symbol(3, 0, text),
                      elf.symbol(6, 0, text, 8), elf.symbol(1, 0x12, inline),
                      elf.symbol(18, 0x10, 0), elf.symbol(1, 0x11, 0xFFF2, 4)))
    symbols = elf.add(b".symtab", SYMTAB, table, link=strings, info=4)
    elf.add(b".rela.text", RELA, elf.relocation(4, 5, 9), link=symbols, info=text)
    elf.add(b".rel.data", REL, elf.relocation(0, 4), link=symbols, info=3)
    elf.add(b".group", GROUP, elf.words(1, inline), link=symbols, info=4)
    scope = bytes([1]) + elf.words(7) + b"\6\2"
    elf.add(b".attributes", ATTRIBUTES, b"A" + elf.words(4 + 6 + len(scope)) + b"qeabi\0" + scope)
    return elf.bytes()


def marked(decoration):
    """An object that defines two names and states in a marker symbol how it was built."""
    elf = Elf(False, True, 1)
    text = elf.add(b".text", 1, b"code", flags=6)
    strings = elf.add(b".strtab", STRTAB, b"\0f\0g\0BuildAttributes$" + decoration + b"\0")
    table = b"".join((elf.symbol(0, 0, 0), elf.symbol(5, 0x00, 0xFFF1),
                      elf.symbol(1, 0x12, text, 0, 2), elf.symbol(3, 0x12, text, 2, 2)))
    elf.add(b".symtab", SYMTAB, table, link=strings, info=2, entry=16)
    return elf.bytes()


def image(wide, little):
    elf = Elf(wide, little, 3)
    text = elf.add(b".text", 1, b"code", flags=2)
    strings = elf.add(b".dynstr", STRTAB, b"\0one\0lib.so\0V1\0", flags=2)
    table = elf.symbol(0, 0, 0) + elf.symbol(1, 0x12, text, BASE) + elf.symbol(5, 0x10, 0)
    dynsym = elf.add(b".dynsym", DYNSYM, table, link=strings, flags=2)
    elf.add(b".hash", HASH, elf.words(1, 3, 1, 0, 2, 0), link=dynsym, flags=2)
    elf.add(b".versym", VERSYM, elf.pack("3H", 0, 2, 3), link=dynsym, flags=2)
    verdef = elf.pack("4H", 1, 0, 2, 1) + elf.words(7, 20, 0) + elf.words(12, 0)
    elf.add(b".verdef", VERDEF, verdef, link=strings, flags=2)
    verneed = elf.pack("HH", 1, 1) + elf.words(5, 16, 0)
    verneed += elf.words(7) + elf.pack("HH", 0, 3) + elf.words(12, 0)
    elf.add(b".verneed", VERNEED, verneed, link=strings, flags=2)
    records = elf.words(1, 1, 5, 5) + elf.words(0)
    preemption = elf.add(b".preempt", PREEMPTION, records, link=strings, flags=2)
    dynamic = [(1, 5), (14, 5), (15, 1), (29, 1), (12, BASE), (21, 0), (30, 1),
               (0x6FFFFFFD, 1), (0x6FFFFFFF, 1), (0x70000002, BASE + elf.offset(preemption, 3)), (0, 0)]
    data = b"".join(elf.addresses(*pair) for pair in dynamic)
    last = elf.add(b".dynamic", DYNAMIC, data, link=strings, flags=2)
    count = sum(1 for section in elf.sections if section.get("flags", 0) & 2) + 1
    note = elf.words(4, 4 * count, 0x40000000) + b"QEL\0" + elf.words(*[0] * count)
    last = elf.add(b".note", NOTE, note, flags=2)
    add_symbols(elf, text)
    elf.segments = [(1, 0, last), (2, last - 1, last - 1), (4, last, last)]
    return elf.bytes()


def gnu_hash(name):
    value = 5381
    for byte in name:
        value = (value * 33 + byte) & 0xFFFFFFFF
    return value


def add_gnu_hash(elf, names, first):
    """A hash table with one bucket of the symbols with these names, from entry `first` on."""
    hashes = [gnu_hash(name) for name in names]
    bits = 64 if elf.wide else 32
    filter_word = 0
    for value in hashes:
        filter_word |= 1 << value % bits | 1 << (value >> 5) % bits
    chains = [value & ~1 for value in hashes]
    chains[-1] |= 1
    data = elf.words(1, first, 1, 5) + elf.addresses(filter_word) + elf.words(first, *chains)
    return elf.add(b".gnu.hash", GNU_HASH, data, flags=2)


def linked(wide, little):
    """A shared object with the sections, segments and tags that linkers of today make."""
    elf = Elf(wide, little, 3, 8)

    def address(section):
        return BASE + elf.offset(section, 4)

    def size(section):
        return len(elf.sections[section]["data"])

    kind, name, addend = (RELA, b".rela", 0) if wide else (REL, b".rel", None)
    hashes = add_gnu_hash(elf, (b"one", b"two"), 2)
    texts = b"\0puts\0one\0two\0libc.so\0V1\0libown.so\0"
    dynsym = elf.add(b".dynsym", DYNSYM, flags=2, link=hashes + 2, info=1)
    dynstr = elf.add(b".dynstr", STRTAB, texts, flags=2)
    elf.sections[hashes]["link"] = dynsym
    versym = elf.add(b".gnu.version", VERSYM, elf.pack("4H", 0, 2, 1, 0x8001), link=dynsym, flags=2)
    need = elf.pack("HH", 1, 1) + elf.words(14, 16, 0)
    need += elf.words(0) + elf.pack("HH", 0, 2) + elf.words(22, 0)
    verneed = elf.add(b".gnu.version_r", VERNEED, need, link=dynstr, info=1, flags=2)
    moves = elf.add(name + b".dyn", kind, flags=2, link=dynsym)
    calls = elf.add(name + b".plt", kind, flags=0x42, link=dynsym)
    init = elf.add(b".init", 1, b"init", flags=6)
    text = elf.add(b".text", 1, b"one and two", flags=6)
    fini = elf.add(b".fini", 1, b"fini", flags=6)
    array = elf.add(b".init_array", INIT_ARRAY, elf.addresses(0), flags=3)
    dynamic = elf.add(b".dynamic", DYNAMIC, link=dynstr, flags=3)
    got = elf.add(b".got", 1, elf.addresses(0, 0), flags=3)
    data = elf.add(b".data", 1, elf.addresses(0, 0), flags=3)
    bss = elf.add(b".bss", NOBITS, size=24, flags=3)

    # All sizes first, then what tells of places.
    entries = 22
    elf.sections[dynsym]["data"] = elf.symbol(0, 0, 0) * 4
    elf.sections[moves]["data"] = elf.relocation(0, 0, addend) * 3
    elf.sections[calls].update(data=elf.relocation(0, 0, addend), info=got)
    elf.sections[dynamic]["data"] = elf.addresses(0, 0) * entries
    elf.sections[dynsym]["data"] = b"".join((
        elf.symbol(0, 0, 0), elf.symbol(1, 0x12, 0), elf.symbol(6, 0x12, text, address(text), 3),
        elf.symbol(10, 0x11, bss, address(bss), 24)))
    width = len(elf.addresses(0))
    # Type 1 is that of relocations that only add the address that the file is loaded at.
    elf.sections[moves]["data"] = b"".join((
        elf.relocation(address(array), 0, addend), elf.relocation(address(data), 0, addend),
        elf.relocation(address(data) + width, 2, addend)))
    elf.sections[calls]["data"] = elf.relocation(address(got), 1, addend)
    tags = [(1, 14), (14, 25), (12, address(init)), (13, address(fini)), (25, address(array)),
            (27, width), (0x6FFFFEF5, address(hashes)), (5, address(dynstr)),
            (6, address(dynsym)), (10, len(texts)), (11, size(dynsym) // 4),
            (0x6FFFFFFE, address(verneed)), (0x6FFFFFFF, 1), (0x6FFFFFF0, address(versym))]
    relocation_tags = (7, 8, 9, 0x6FFFFFF9) if wide else (17, 18, 19, 0x6FFFFFFA)
    tags += zip(relocation_tags, (address(moves), size(moves), size(moves) // 3, 2))
    tags += [(2, size(calls)), (20, relocation_tags[0]), (23, address(calls)), (0, 0)]
    elf.sections[dynamic]["data"] = b"".join(elf.addresses(*pair) for pair in tags)
    assert len(tags) == entries
    add_symbols(elf, text)
    elf.segments = [(1, 0, calls), (1, init, fini), (1, array, bss), (2, dynamic, dynamic)]
    return elf.bytes()


def elf_files():
    for wide in (False, True):
        for little in (False, True):
            yield relocatable(wide, little)
            yield plain(wide, little)
            yield image(wide, little)
            yield linked(wide, little)


def headers():
    """Starts of files: whole headers, cut ones, and the second form."""
    for file in elf_files():
        yield file[:64]
        yield file[:20]
    second = Elf(False, True, 1).bytes()[:52]
    yield b"\xf7ORC" + second[4:] + struct.pack("<II", 2, 8)
