#include "scan/ArchiveExpander.h"
