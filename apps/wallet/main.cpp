#include "jsonl/driver.h"
#include "options.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <cstdlib>
#include <iostream>

int main(int, char**) { return 0; }
