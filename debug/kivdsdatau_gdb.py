"""GDB shows attributes and collections by what they hold:

    (gdb) print collection
    $1 = collection of 2 attributes = {(0010,0020) LO = {"P-007"}, (0028,0010) US = {512}}

GDB loads this by itself with an installed library (share/gdb/auto-load); by hand: source debug/kivdsdatau_gdb.py
"""

import struct

import gdb
import gdb.printing

# Representation codes (PS3.5 6.2), as CKivDSDicomAttribute.h lists them.
REPRESENTATIONS = dict(enumerate(
    'AE AS AT CS DA ? DS FD FL IS LO LT UT ? SH SL SQ SS ST TM UI UL US UN ? ? PN OB OW ? DT'.split()))
BYTES = {5, 13, 23, 24, 25, 27}  # characters that are no text: data set, other binary, UN, retired, ..., OB
# tagEKivAGAttributeType: the format of an element
ELEMENTS = {1: 'B', 2: 'h', 3: 'H', 4: 'i', 5: 'I', 6: 'f', 7: 'd'}


def most():
    """How many elements to show of one value, and how many values."""
    return gdb.parameter('print elements') or 1 << 31


def read(address, size):
    return bytes(gdb.selected_inferior().read_memory(int(address), size)) if size > 0 else b''


def text_of(characters):
    """Characters up to their NUL, in quotes; what is not ASCII as \\x and two digits."""
    return '"%s"' % ''.join(chr(c) if 32 <= c < 127 else '\\x%02x' % c for c in characters.split(b'\0')[0])


def vector(value):
    """The elements of a std::vector of libstdc++."""
    begin, end = value['_M_impl']['_M_start'], value['_M_impl']['_M_finish']
    return [begin[i] for i in range(int(end - begin))]


def attribute_map(value):
    """The attributes' pointers in tag order, from a map's array or, when it has become one, from its std::map."""
    entries = value['m_Entries']
    if not entries['m_nSize']:
        holder = value['m_pMap']  # a std::unique_ptr, which is a pointer
        tree = holder.type.strip_typedefs().template_argument(0).pointer().pointer()
        pointer = holder.address.cast(tree).dereference()
        if pointer:
            yield from std_map(pointer.dereference())
    for i in range(int(entries['m_nSize'])):
        yield entries['m_pEntries'][i]['attribute']


def std_map(value):
    """The second ones of a std::map, a red-black tree of libstdc++."""
    tree = value['_M_t']['_M_impl']
    pair = value.type.strip_typedefs().template_argument(3).template_argument(0).pointer()
    pointer = tree['_M_header'].address
    base = pointer.type
    node = pointer['_M_left']
    for _ in range(int(tree['_M_node_count'])):
        yield (node + 1).cast(pair)['second']
        if node['_M_right']:
            node = node['_M_right']
            while node['_M_left']:
                node = node['_M_left']
        else:
            while node == node['_M_parent']['_M_right']:
                node = node['_M_parent']
            node = node['_M_parent']
        node = node.cast(base)


def whole(value):
    """The object as its own class has it."""
    return value.cast(value.dynamic_type)


def frames(frame_range):
    """The runs of a CKivIPPRangeIDC, null for none."""
    runs = [(int(run['m_nFirst']), int(run['m_nFirst']) + int(run['m_nCount']) - 1)
            for run in vector(whole(frame_range.dereference())['m_Runs'])]
    return 'frames ' + (', '.join('%d-%d' % run for run in runs) or 'none')


class Children:
    """What is shown in braces, without labels."""

    def children(self):
        for i, item in enumerate(self.items()):
            yield str(i), item

    def display_hint(self):
        return 'array'


class Attribute(Children):
    def __init__(self, value):
        self.value = whole(value)

    def to_string(self):
        tag, code = int(self.value['m_ulTag']), int(self.value['m_nRepresentation'])
        words = ['(%04x,%04x) %s' % (tag >> 16, tag & 0xFFFF, REPRESENTATIONS.get(code, '?'))]
        if words[0].endswith('?'):
            words[0] = words[0][:-1] + 'code %d' % code
        if self.value['m_bPrivate']:
            words.append('private')
        if self.value['m_bMustReplicate']:
            words.append('must replicate')
        if self.value['m_pFrameRange']:
            words.append(frames(self.value['m_pFrameRange']))
        return ', '.join(words)

    def items(self):
        codes = vector(self.value['m_Codes']) if self.has('m_Codes') else []
        for code in codes:
            field = lambda name: read(code[name].address, code[name].type.sizeof)
            yield '%s %s %s' % tuple(map(text_of, map(
                field, ('szCodeValue', 'szCodingSchemeDesignator', 'szCodeMeaning'))))
        for i in range(0 if codes else min(int(self.value['m_nNumberOfValues']), most())):
            yield self.value_text(self.value['m_pValues'][i])

    def value_text(self, record):
        """Text in quotes, numbers as DICOM joins them."""
        count, element = int(record['nCount']), ELEMENTS.get(int(record['eType']))
        if not element or not record['pData'] or count <= 0:
            return 'empty'
        shown = min(count, most())
        data = read(record['pData'], shown * struct.calcsize(element))
        more = '...' if shown < count else ''
        if element == 'B' and int(self.value['m_nRepresentation']) not in BYTES and not self.value['m_bPrivate']:
            return text_of(data) + more
        form = '%02x' if element == 'B' else '%g' if element in 'fd' else '%d'
        return '\\'.join(form % number for number in struct.unpack('=%d%s' % (shown, element), data)) + more

    def has(self, field):
        return any(field == own.name for own in self.value.type.fields())


class Collection(Children):
    """A facade, in any of its forms, or one of the collections that a facade may hold."""

    def __init__(self, value):
        self.value = whole(value)
        self.name = self.value.type.name

    def held(self, name):
        """What a facade holds behind a pointer; the object itself where it is of that class."""
        if self.name == 'CKivDS' + name:
            return self.value
        pointer = self.value['m_p' + name]
        return whole(pointer.dereference()) if pointer else None

    def to_string(self):
        compound, enhanced = self.held('CompoundCollection'), self.held('EnhancedMFCollection')
        if compound is not None:
            return 'compound collection of %d' % len(vector(compound['m_Collections']))
        if enhanced is not None:
            return 'enhanced multi-frame collection of %d frames' % len(vector(enhanced['m_MFCollections']))
        count = len(list(self.attributes()))
        return 'collection of %d attribute%s' % (count, 's'[:count != 1]) if any(self.parts()) else \
            'collection without parts'

    def items(self):
        compound, enhanced = self.held('CompoundCollection'), self.held('EnhancedMFCollection')
        if compound is not None:
            yield from (member.dereference() for member in vector(compound['m_Collections']))
            return
        for attribute in self.attributes():
            yield attribute.dereference() if attribute else 'null'
        if enhanced is not None:
            yield from (frame.dereference() for frame in vector(enhanced['m_MFCollections']))

    def parts(self):
        """The parts that hold attributes; of an enhanced multi-frame collection those of its regular collection."""
        if self.name == 'CKivDSBaseDicomAttributeCollection':
            return [self.value.address]
        enhanced = self.held('EnhancedMFCollection')
        facade = self.value if enhanced is None else enhanced
        return [facade['m_pSingleFrameCollection'], facade['m_pMultiFrameCollection']]

    def attributes(self):
        for part in self.parts():
            if part:
                yield from attribute_map(part['m_Attributes'])


def printers():
    found = gdb.printing.RegexpCollectionPrettyPrinter('KivDSDataU')
    found.add_printer('attribute', '^CKivDS(Dicom|CodeSequence)Attribute$', Attribute)
    found.add_printer('collection', '^CKivDS(Dicom|BaseDicom)AttributeCollection$', Collection)
    found.add_printer('collection of collections', '^CKivDS(Compound|EnhancedMF)Collection$', Collection)
    return found


gdb.printing.register_pretty_printer(gdb.current_objfile(), printers(), replace=True)
