#!/usr/bin/env python3
"""Between a corpus file and a directory with one file an input, as libFuzzer keeps them:
  corpus.py unpack FILE DIRECTORY
  corpus.py pack FILE DIRECTORY     keeps the comments of FILE and replaces its inputs
  corpus.py show INPUT              the line for the input in a file of libFuzzer's"""
import re
import sys
from pathlib import Path


def escaped(data):
    def text(at, byte):
        if byte in b'\n\t':
            return '\\n' if byte == 10 else '\\t'
        plain = 32 <= byte < 127 and byte != ord('\\') and not (at == 0 and byte == ord('#'))
        return chr(byte) if plain else f'\\x{byte:02X}'
    return ''.join(text(at, byte) for at, byte in enumerate(data))


def unescaped(line):
    def data(m):
        return {'n': '\n', 't': '\t'}.get(m[1]) or chr(int(m[1][1:], 16))
    return re.sub(r'\\(x..|n|t)', data, line).encode('latin-1')


what, file, *directory = sys.argv[1:]
if what == 'show':
    sys.exit(print(escaped(Path(file).read_bytes())))
directory = Path(directory[0])
lines = Path(file).read_text().splitlines()
if what == 'unpack':
    directory.mkdir(exist_ok=True)
    for k, line in enumerate(line for line in lines if line and line[0] != '#'):
        (directory / f'shipped-{k}').write_bytes(unescaped(line))
elif what == 'pack':
    inputs = sorted(filter(None, (escaped(path.read_bytes()) for path in directory.iterdir())))
    Path(file).write_text('\n'.join([line for line in lines if line[:1] == '#'] + inputs) + '\n')
