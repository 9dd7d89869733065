#!/usr/bin/python3
"""Random operations on a file of the volume and on a local twin, which must never differ.

usage: twin.py SECONDS FILE TWIN [SEED]
Prints the seed; ends with an error and the last operations at the first difference.
"""
import collections
import mmap
import os
import random
import sys
import time

LARGEST_FILE = 3 * 1024 * 1024
LARGEST_PIECE = 200 * 1024


class Pair:
    """Both files, open. Every operation is done on both."""

    def __init__(self, file, twin):
        self.names = file, twin
        self.history = collections.deque(maxlen=40)
        self.open(os.O_CREAT | os.O_TRUNC)

    def open(self, more=0):
        self.handles = [os.open(name, os.O_RDWR | more, 0o600) for name in self.names]

    def close(self):
        for handle in self.handles:
            os.close(handle)

    def size(self):
        sizes = [os.fstat(handle).st_size for handle in self.handles]
        assert sizes[0] == sizes[1], f"the sizes differ: {sizes}"
        return sizes[0]

    def compare_all(self):
        self.compare(0, self.size() + 10)

    def compare(self, offset, length):
        found = [os.pread(handle, length, offset) for handle in self.handles]
        assert found[0] == found[1], f"the contents differ in {length} bytes from {offset}"

    def write(self):
        offset = random.randrange(min(self.size() + LARGEST_PIECE, LARGEST_FILE))
        self.put(offset)

    def append(self):
        if self.size() < LARGEST_FILE:
            self.put(self.size())

    def put(self, offset):
        data = random.randbytes(random.randint(1, LARGEST_PIECE))
        self.history.append(f"  {len(data)} bytes from {offset}")
        for handle in self.handles:
            assert os.pwrite(handle, data, offset) == len(data), "a short write"

    def read(self):
        self.compare(random.randrange(self.size() + 100), random.randint(1, LARGEST_PIECE))

    def truncate(self):
        size = random.randrange(random.choice((self.size() + 1, LARGEST_FILE)))
        self.history.append(f"  to {size}")
        for file in random.choice((self.handles, self.names)):
            os.truncate(file, size)

    def sync(self):
        os.fsync(self.handles[0])

    def reopen(self):
        self.close()
        self.open()

    def rename(self):
        os.rename(self.names[0], self.names[0] + ".renamed")
        os.rename(self.names[0] + ".renamed", self.names[0])

    def replace(self):
        """As editors save: by a copy that takes the name. It hides what differed before."""
        self.compare_all()
        copy = self.names[0] + ".copy"
        with open(self.names[1], "rb") as twin, open(copy, "wb") as file:
            file.write(twin.read())
        self.close()
        os.rename(copy, self.names[0])
        self.open()

    def mapped_read(self):
        with mmap.mmap(self.handles[0], 0, prot=mmap.PROT_READ) as mapped:
            offset = random.randrange(len(mapped))
            length = random.randint(1, LARGEST_PIECE)
            expected = os.pread(self.handles[1], length, offset)
            assert mapped[offset:offset + length] == expected, f"the mapped contents differ from {offset}"

    def mapped_write(self):
        with mmap.mmap(self.handles[0], 0) as mapped:
            offset = random.randrange(len(mapped))
            data = random.randbytes(random.randint(1, min(len(mapped) - offset, LARGEST_PIECE)))
            self.history.append(f"  {len(data)} bytes from {offset}")
            mapped[offset:offset + len(data)] = data
            mapped.flush()
        os.pwrite(self.handles[1], data, offset)


def main():
    seconds, file, twin, *seed = sys.argv[1:]
    seed = int(seed[0]) if seed else random.randrange(1 << 32)
    print("seed", seed, flush=True)
    random.seed(seed)
    pair = Pair(file, twin)
    weights = {pair.write: 6, pair.append: 2, pair.truncate: 3, pair.sync: 1, pair.reopen: 1, pair.rename: 1,
               pair.replace: 1, pair.mapped_write: 2, pair.mapped_read: 2, pair.read: 5}
    end, count = time.monotonic() + float(seconds), 0
    try:
        while time.monotonic() < end:
            operation, = random.choices(list(weights), weights.values())
            pair.history.append(f"{operation.__name__}, size {pair.size()}")
            if pair.size() > 0 or operation not in (pair.mapped_read, pair.mapped_write):
                operation()
            count += 1
            if count % 50 == 0:
                pair.compare_all()
        pair.compare_all()
        pair.close()
    except (AssertionError, OSError) as failure:
        sys.exit("\n".join([*pair.history, f"FAILED after {count} operations: {failure}"]))
    print(count, "operations, no difference")


if __name__ == "__main__":
    main()
