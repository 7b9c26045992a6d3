#pragma once

/// The diagnosis type of a node as the host and the engine may exchange it: 0, 1 and 2 pass; any
/// other number is reported on standard error, after the words `what`, and gives 2.
int CheckedDiagnosisType(int type, const char* what);
