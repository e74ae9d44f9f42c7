#!/usr/bin/env python
"""Reads weather stations' reports.

It's a docstring: "quotes", 'apostrophes' and # signs are text.
"""
import os, sys
import re as regex
from os import path
from sys import argv, stdin
from . import stations

__version__ = '1.2'

LIMIT = 0x1F + 017 + 42 + 100L + 3.5 + .25 + 1.5e+10 + 0
NAMES = ("O'Brien", 'say "hi"', "tab\t \"quoted\"", 'don\'t', "", '')
RAW = r"C:\temp" + u'text'
LONG = "begins here \
ends here"
SQL = '''select "name" # no comment
    from stations -- it's text
    where id = "''' + 'x'


class Station:
    '''One station.'''

    def __init__(self, name, height=0.5):
        self.name = name  # it's the name
        self.height = height
        self._cache = {}

    def report(self, lines):
        """Lines of the form "name: value"; others aren't counted."""
        total = 0
        for line in lines:
            if not line.strip() or line.startswith('#'):
                continue
            key, value = line.split(':', 1)
            try:
                total += float(value)
            except ValueError:
                print 'bad line: %r' % line
                pass
            finally:
                self._cache[key] = value
        return total

    def __repr__(self):
        return "<Station '%s'>" % self.name


class Window(QMainWindow):
    def __init__(self, parent = None):
        QMainWindow.__init__(self, parent)
        self.view = QListView(self)
        self.connect(self.view, SIGNAL("clicked()"), self.close)
        exec "x = 1" in {}


def unclosed():
    text = "never closed
    after = 1
    other = 'never closed either
    after = 2


def main(args):
    global LIMIT
    while len(args) > 0 and True is not None:
        name = args.pop(0)
        if path.exists(name):
            print >> sys.stderr, "reading", name
            lines = open(name).readlines()
        elif name in ['-', "--"]:
            lines = stdin.readlines()
        else:
            raise IOError, "no file '%s'" % name
        assert lines, 'empty'
        del lines[0]
        yield_ = lambda a, b: a[1:2] ** b // 3 | ~a
    return map(str, range(10)) + [x for x in xrange(0xff)]


def empty(): pass
def lonely(a,
           b): return '''one line''' + """another"""


if __name__ == '__main__':
    main(sys.argv[1:])

'''
An open string at the end
of the file: "never closed
