# Looks at debuggee.cpp's objects from Look's caller; `natvis` is the path of the .natvis file.
set confirm off
set width 0
break Look
run
up
print plain
print *number
print compound
print *series
print enhanced
print *object
print *plain.m_pMultiFrameCollection
print none

python
# Whatever an expression of the .natvis file names, its type has. `whatis` reads no memory, so any address will do.
import re, xml.etree.ElementTree
for kind in xml.etree.ElementTree.parse(natvis).getroot():
    name = kind.get('Name')
    expressions = []
    for element in kind.iter():
        tag, text = element.tag.split('}')[1], (element.text or '').strip()
        if element.get('Condition'):
            expressions.append(element.get('Condition'))
        if tag == 'DisplayString':
            expressions += re.findall(r'{(.*?)}', text)
        elif tag in ('Item', 'ExpandedItem', 'Size', 'ValuePointer'):
            expressions.append(text)
    for expression in expressions:
        bare = re.sub(r',[^,()]*$', '', expression)  # without the format
        own = '((%s*)64)' % name
        member = r'(?<![\w>.])((m_|sz|nCount|pData|eType|attribute)\w*)'
        gdb.execute('whatis ' + re.sub(member, own + r'->\1', bare.replace('this', own)), to_string=True)
    print('$0 = natvis ' + name)
end
