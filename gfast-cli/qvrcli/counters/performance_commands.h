// How a line has been doing: its performance counters as they stand, by quarter hour and by day.
#pragma once

#include <libcli.h>
#include <qvr.h>

namespace gfast::console {

int CLI_showPerformanceMonitoringCounters(cli_def* cli, const char* command, char* argv[], int argc);
int CLI_showLinePerformanceCounters(cli_def* cli, const char* command, char* argv[], int argc);
int CLI_showChannelPerformanceCounters(cli_def* cli, const char* command, char* argv[], int argc);
int CLI_show15minCounters(cli_def* cli, const char* command, char* argv[], int argc);
int CLI_show24hrCounters(cli_def* cli, const char* command, char* argv[], int argc);
int CLI_showNumberOf15minIntervals(cli_def* cli, const char* command, char* argv[], int argc);
int CLI_showNumberOf24hrIntervals(cli_def* cli, const char* command, char* argv[], int argc);
int CLI_dump15minCountersHistoryDB(cli_def* cli, const char* command, char* argv[], int argc);

// One line a counter. The far end has no initialisation counts and no TIGA.
void CLI_printLinePerformanceCounters(cli_def* cli, const QVR_linePerformance_t& counters, bool nearEnd);
void CLI_printChannelPerformanceCounters(cli_def* cli, const QVR_ChannelPerformance_t& counters,
                                         bool nearEnd);
void CLI_printPerformanceMonitoringCounters(cli_def* cli, const G9972_PM_COUNTERS_S& counters);

// One interval of the history to the session, for a walk through all of it; TRUE, so that it goes on.
BOOL CLI_printCounterHistory(QVR_lineId_t lineId, QVR_intervalLinkCounterDB_t* interval);

}  // namespace gfast::console
