#pragma once

#include "catalogue/Connection.h"

#include <memory>

// The one connection; it exists only for one unit of work.
extern std::unique_ptr<Connection> gConnection;

// The connection string of every unit of work, kept as one text.
extern const QString KevroConnectionString;

// Creates and opens gConnection on the data source KEVRO; on failure the operator is told and the
// program ends.
void OpenDatabase();
// Closes and releases gConnection; on failure the operator is told and the program ends.
void CloseDatabase();
