#!/usr/bin/python3
"""Times Pygments' Swift lexer on one file, the highlighter benchmark's peer.

Usage: pygments_swift.py FILE [RUNS]
Prints "<pygments version> <tokens> <best CPU seconds>".
"""
import sys
import time

import pygments
from pygments.lexers.objective import SwiftLexer


def main():
    path = sys.argv[1]
    runs = int(sys.argv[2]) if len(sys.argv) > 2 else 3
    with open(path, encoding="utf-8") as f:
        text = f.read()
    lexer = SwiftLexer()
    best = float("inf")
    tokens = 0
    for _ in range(runs):
        start = time.thread_time()
        # The unprocessed stream is the lexer's own work, without filters.
        tokens = sum(1 for _ in lexer.get_tokens_unprocessed(text))
        best = min(best, time.thread_time() - start)
    print(pygments.__version__, tokens, f"{best:.6f}")


if __name__ == "__main__":
    main()
