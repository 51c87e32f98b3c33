#ifndef QZXML_BENCH_PROCESSSETUP_H
#define QZXML_BENCH_PROCESSSETUP_H

/// Sets the process up for warm, comparable figures: memory a pass frees is kept for the
/// next instead of going back to the system (on a machine where page faults are slow they
/// would be measured instead of the parser), and the process stays on the core it runs on
/// (the cores of a shared machine differ in speed from moment to moment, and figures are
/// compared only with figures of the same run).
void setUpProcess();

#endif
