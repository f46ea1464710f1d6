"""Shows strings, records, tables, views and field maps of vekdb in gdb as what they hold.

    (gdb) source /usr/share/vekdb/gdb/vekdb_printers.py
    (gdb) print log
    $1 = table of 6 rows, 3 columns: Scene text, Take long, Notes text

Nothing of the program is called, so core files are shown as well. Strings need no more than the
debug information of the application; what stands inside of records, tables and views needs that of
the library (build it with CMAKE_BUILD_TYPE=RelWithDebInfo). Where it is missing, or memory is
damaged, a printer says so and no more.
"""

import gdb
import gdb.printing

NO_INSIDE = "(the library has no debug information)"
MOST_ROWS = 200  # of a table or a view, as `set print elements` has it where it says nothing


def limit():
    """How many rows are shown at most."""
    wanted = gdb.parameter("print elements")
    return MOST_ROWS if wanted is None or wanted == 0 else int(wanted)


def is_whole(value):
    """Whether gdb knows what a struct has inside, and not just its name."""
    return bool(value.type.strip_typedefs().fields())


def parts_of(value):
    """The parts of a table or of a view, or None where gdb does not know them."""
    if "parts_" not in [field.name for field in value.type.strip_typedefs().fields()]:
        found = [value[field] for field in value.type.strip_typedefs().fields()
                 if field.is_base_class and field.name == "vekdb"]
        return parts_of(found[0]) if found else None
    parts = value["parts_"].dereference()
    return parts if is_whole(parts) else None


def counted(number, thing):
    return "%d %s%s" % (number, thing, "" if number == 1 else "s")


def bytes_at(pointer, size):
    if size == 0:
        return b""
    return gdb.selected_inferior().read_memory(int(pointer), int(size)).tobytes()


def quoted(data):
    """A value's bytes as a string of C, UTF-8 where it is some."""
    text = data.decode("utf-8", "backslashreplace")
    for plain, written in (("\\", "\\\\"), ('"', '\\"'), ("\n", "\\n"), ("\r", "\\r"),
                           ("\t", "\\t"), ("\0", "\\000")):
        if plain != "\\" or "\\x" not in text:
            text = text.replace(plain, written)
    return '"' + text + '"'


def string_bytes(value):
    """The bytes of a LightweightString<char>."""
    record = value["impl_"]
    if int(record) == 0:
        return b""
    return bytes_at(record["data"], record["length"])


class StringPrinter:
    """LightweightString: the text, or null."""

    def __init__(self, value):
        self.value = value

    def to_string(self):
        record = self.value["impl_"]
        if int(record) == 0:
            return "null"
        width = record["data"].type.target().sizeof
        data = bytes_at(record["data"], int(record["length"]) * width)
        if width == 1:
            return quoted(data)
        return "L" + quoted(data.decode("utf-32-le", "replace").encode("utf-8"))


class PtrPrinter:
    """Quor::Ptr: the object, and how many share it."""

    def __init__(self, value):
        self.value = value

    def to_string(self):
        place = self.value["object_"]
        if int(place) == 0:
            return "null"
        return "%s, shared by %d" % (place, int(self.value["count_"].dereference()))


class Values:
    """The values of a record, wherever they live."""

    def __init__(self, record):
        self.record = record
        self.count = int(record["count_"])
        self.stored = int(record["stored_"])
        self.is_slices = int(record["storage_"].cast(gdb.lookup_type("unsigned char"))) == 1
        self.place = record["values_"]["slices" if self.is_slices else "strings"]

    def of_line(self, slices, i):
        slices = slices.dereference()
        ends = (slices.address + 1).cast(gdb.lookup_type("unsigned short").pointer())
        begin = 0 if i == 0 else int(ends[i - 1])
        place = int(slices["place"])
        gap = (place >> 56) & 0x7F
        text = slices["store"].dereference()["text_"] + (place & ((1 << 56) - 1))
        return bytes_at(text + begin, int(ends[i]) - begin - gap)

    def of_strings(self, i):
        strings = self.place.dereference()
        room = int(strings["room"])
        text = (strings.address + 1).cast(
            gdb.lookup_type("LightweightString<char>").pointer())
        own = (text + room).cast(gdb.lookup_type("bool").pointer())
        if i >= int(strings["underCount"]) or (room > 0 and bool(own[i])):
            return string_bytes(text[i])
        patch = strings["patches"]
        while int(patch) != 0 and int(patch["index"]) != i:
            patch = patch["next"]
        if int(patch) != 0:
            return bytes_at((patch + 1).cast(gdb.lookup_type("char").pointer()), patch["size"])
        return self.of_line(strings["under"], i)

    def __getitem__(self, i):
        if i >= self.stored or int(self.place) == 0:
            return b""
        return self.of_line(self.place, i) if self.is_slices else self.of_strings(i)


class Columns:
    """Names and types of a table's columns."""

    NAMES = {"t": "timecode", "T": "timecode_s", "a": "text", "A": "text_s", "D": "time_of_day",
             "d": "date", "M": "dos_date", "c": "char", "n": "numeric", "l": "long",
             "f": "double"}

    def __init__(self, parts):
        columns = parts["columns"]
        self.count = int(columns["count_"])
        self.names = [string_bytes(name).decode("utf-8", "backslashreplace")
                      for name in items_of(columns["names_"])]
        self.types = [self.type_name(int(code)) for code in items_of(columns["types_"])]

    def type_name(self, code):
        letter = chr(code & 0xFF)
        return self.NAMES.get(letter, letter)

    def name(self, i):
        return self.names[i] if i < len(self.names) and self.names[i] else "[%d]" % i

    def said(self):
        return ", ".join("%s %s" % pair for pair in zip(self.names, self.types))


def items_of(vector):
    """The items of a std::vector."""
    begin = vector["_M_impl"]["_M_start"]
    return [begin[i] for i in range(int(vector["_M_impl"]["_M_finish"] - begin))]


def table_parts_of(record):
    """The parts of the table that owns a record, or None."""
    owner = record["owner_"]
    if int(owner) == 0:
        return None
    try:
        return parts_of(owner.cast(owner.dynamic_type).dereference())
    except gdb.error:
        return None


class RecordPrinter:
    """dbrecord: its values by the names of the columns."""

    def __init__(self, value):
        self.value = value

    def is_known(self):
        name = "LineSlices" if Values(self.value).is_slices else "RecordStrings"
        place = self.value["values_"]["slices" if name == "LineSlices" else "strings"]
        return int(place) == 0 or is_whole(place.dereference())

    def to_string(self):
        said = "record of " + counted(int(self.value["count_"]), "value")
        tag = int(self.value["tag_"])
        said += ", tag %d" % tag if tag != 0 else ""
        said += ", changed" if bool(self.value["changed_"]) else ""
        return said if self.is_known() else said + " " + NO_INSIDE

    def children(self):
        if not self.is_known():
            return
        values = Values(self.value)
        table = table_parts_of(self.value)
        columns = Columns(table) if table is not None else None
        for i in range(values.count):
            yield columns.name(i) if columns else "[%d]" % i, quoted(values[i])


def row_text(record):
    """One line of a row."""
    if int(record) == 0:
        return "no record"
    values = Values(record.dereference())
    return "{" + ", ".join(quoted(values[i]) for i in range(values.count)) + "}"


class TablePrinter:
    """vekdb: columns, parameters and rows."""

    def __init__(self, value):
        self.parts = parts_of(value)

    def to_string(self):
        if self.parts is None:
            return "table " + NO_INSIDE
        rows = self.parts["rows"]
        columns = Columns(self.parts)
        said = "table of %s, %s" % (counted(int(rows["count_"]), "row"),
                                   counted(columns.count, "column"))
        said += ": " + columns.said() if columns.count > 0 else ""
        said += "; shows %d tagged" % int(rows["taggedCount_"]) if rows["tagsOnly_"] != 0 else ""
        return said

    def children(self):
        if self.parts is None:
            return
        parameters = self.parts["parameters"]
        for i in range(int(parameters["count_"])):
            pair = parameters["pairs_"][i]
            yield self.text(pair["name"]), self.text(pair["value"], quoted)
        for i in range(min(limit(), int(self.parts["rows"]["count_"]))):
            yield "row %d" % i, row_text(self.row(i))

    def row(self, raw):
        rows = self.parts["rows"]
        behind_gap = raw >= int(rows["gapAt_"])
        return rows["slots_"][raw + (int(rows["gap_"]) if behind_gap else 0)]

    @staticmethod
    def text(pointer, form=lambda data: data.decode("utf-8", "backslashreplace")):
        if int(pointer) == 0:
            return form(b"")
        return form(pointer.string("latin-1").encode("latin-1"))


class ViewRows:
    """The source rows and tags of a view."""

    def __init__(self, parts):
        self.index = parts["index"]
        self.count = int(self.index["count_"])
        self.is_deferred = int(unique_pointer(self.index["deferred_"])) != 0

    def pairs(self):
        blocks = self.index["rows_"]
        is_same = bool(blocks["same_"])
        added = 0
        row = 0
        for entry in items_of(blocks["entries_"]):
            added += int(entry["delta"])
            block = unique_pointer(entry["block"]).dereference()
            for i in range(int(entry["rows"])):
                source = row if is_same else (int(block["rows"][i]) + added) & 0xFFFFFFFF
                yield source, int(block["tags"][i])
                row += 1


def unique_pointer(pointer):
    """What a std::unique_ptr holds."""
    inside = pointer["_M_t"]
    while inside.type.strip_typedefs().code != gdb.TYPE_CODE_PTR:
        inside = pointer_inside(inside)
    return inside


def pointer_inside(value):
    """The one field or base of a tuple's layers that has a pointer in it."""
    for field in reversed(value.type.strip_typedefs().fields()):
        kind = field.type.strip_typedefs()
        if kind.sizeof == 8 and (kind.code == gdb.TYPE_CODE_PTR or kind.fields()):
            return value[field]
    raise gdb.error("no pointer is inside")


class ViewPrinter:
    """VDBViewRep: what it stands on, and its rows by their numbers in that."""

    def __init__(self, value):
        self.value = value
        self.parts = parts_of(value)

    def to_string(self):
        if self.parts is None:
            return "view " + NO_INSIDE
        said = "view of " + counted(ViewRows(self.parts).count, "row")
        base = self.parts["base"]["link_"]["source_"]
        table = self.parts["table"]["link_"]["source_"]
        said += " of another view" if int(base) != 0 else \
                " of a table" if int(table) != 0 else ", without a source"
        return said + ", held by %d" % int(self.value["handleCount_"])

    def children(self):
        if self.parts is None:
            return
        rows = ViewRows(self.parts)
        if rows.is_deferred:
            return  # rows are being removed; which ones are left is known afterwards
        for i, (source, tag) in enumerate(rows.pairs()):
            if i >= min(limit(), rows.count):
                return
            yield "row %d" % i, "source row %d%s" % (source, ", tag %d" % tag if tag else "")


class HandlePrinter:
    """VDBView: the view that it holds."""

    def __init__(self, value):
        self.view = value["view_"]

    def to_string(self):
        if int(self.view) == 0:
            return "null"
        return "handle of a " + ViewPrinter(self.view.dereference()).to_string()

    def children(self):
        if int(self.view) != 0:
            yield from ViewPrinter(self.view.dereference()).children()


class FieldMapPrinter:
    """FieldMap: the columns in their order, and which of them are shown."""

    def __init__(self, value):
        self.names = [string_bytes(name) for name in items_of(value["names_"])]
        self.visible = self.bits(value["visible_"], len(self.names))

    @staticmethod
    def bits(vector, count):
        start = vector["_M_impl"]["_M_start"]
        word = start["_M_p"].type.target().sizeof * 8
        first = int(start["_M_offset"])
        return [bool((int(start["_M_p"][(first + i) // word]) >> ((first + i) % word)) & 1)
                for i in range(count)]

    def to_string(self):
        return "field map of %s, %d shown" % (counted(len(self.names), "column"),
                                              sum(self.visible))

    def children(self):
        for i, name in enumerate(self.names):
            yield "[%d]" % i, quoted(name) + ("" if self.visible[i] else " hidden")


def guarded(printer):
    """A printer that says what it could not read instead of failing."""

    class Guarded(gdb.ValuePrinter if hasattr(gdb, "ValuePrinter") else object):
        def __init__(self, value):
            self.failure = None
            try:
                is_reference = value.type.code in (gdb.TYPE_CODE_REF, gdb.TYPE_CODE_RVALUE_REF)
                self.inside = printer(value.referenced_value() if is_reference else value)
            except (gdb.error, ValueError) as failure:
                self.failure = failure

        def to_string(self):
            if self.failure is None:
                try:
                    return self.inside.to_string()
                except (gdb.error, ValueError, OverflowError) as failure:
                    self.failure = failure
            return "(damaged: %s)" % self.failure

        def children(self):
            if self.failure is None and hasattr(self.inside, "children"):
                try:
                    yield from self.inside.children()
                except (gdb.error, ValueError, OverflowError) as failure:
                    yield "damaged", str(failure)

    return Guarded


def collection():
    printers = gdb.printing.RegexpCollectionPrettyPrinter("vekdb")
    for name, expression, printer in (
            ("string", "^LightweightString<.*>$", StringPrinter),
            ("ptr", "^Quor::Ptr<.*>$", PtrPrinter),
            ("record", "^dbrecord$", RecordPrinter),
            ("table", "^(vekdb|QuorContainerFile::(Reader|Writer))$", TablePrinter),
            ("view", "^VDBViewRep$", ViewPrinter),
            ("handle", "^VDBView$", HandlePrinter),
            ("fields", "^FieldMap$", FieldMapPrinter)):
        printers.add_printer(name, expression, guarded(printer))
    return printers


gdb.printing.register_pretty_printer(None, collection(), replace=True)
