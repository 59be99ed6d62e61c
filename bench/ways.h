#pragma once

#include "Workload.h"

/// The ways of the table in workloads.cpp.
namespace bench::ways {

void callStatusRaw(Laps& laps);
void callStatusLimit(Laps& laps);
void callStatusVariadic(Laps& laps);
void callStatusChecked(Laps& laps);

void callExchangeRaw(Laps& laps);
void callExchangeLimit(Laps& laps);
void callExchangeVariadic(Laps& laps);
void callExchangeChecked(Laps& laps);

void readPointsRaw(Laps& laps);
void readPointsLimit(Laps& laps);
void readPointsLibrary(Laps& laps);

void writePointsRaw(Laps& laps);
void writePointsLimit(Laps& laps);
void writePointsLibrary(Laps& laps);

void readMatrixRaw(Laps& laps);
void readMatrixLimit(Laps& laps);
void readMatrixLibrary(Laps& laps);

void writeMatrixRaw(Laps& laps);
void writeMatrixLimit(Laps& laps);
void writeMatrixLibrary(Laps& laps);

void parseRecordsRaw(Laps& laps);
void parseRecordsLimit(Laps& laps);
void parseRecordsLibrary(Laps& laps);

void newStateRaw(Laps& laps);
void newStateLimit(Laps& laps);
void newStateLibrary(Laps& laps);

void getTextRaw(Laps& laps);
void getTextLimit(Laps& laps);
void getTextLibrary(Laps& laps);

} // namespace bench::ways
