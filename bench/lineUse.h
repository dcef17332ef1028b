/// What polling costs on the line: requests, bytes and time of one cycle, by how far merging goes.
#ifndef BENCH_LINE_USE_H
#define BENCH_LINE_USE_H

/// Prints, for three poll lists as plants have them and merge gaps of 0 to 64: the list, the gap (or "none" for a
/// request an item), requests, bytes in both directions, and milliseconds at 9600, 19200 and 115200 baud, parted by
/// tabs.
void printLineUse();

#endif
