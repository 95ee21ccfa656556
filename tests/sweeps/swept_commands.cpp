#include "sweeps/swept_commands.h"

#include <libcli.h>

#include <algorithm>
#include <fstream>
#include <span>
#include <string_view>

#include "qvrcli/vocabulary/command_table.h"
#include "virtual-board/chip/firmware_image.h"

using gfast::board::FirmwareKind;

namespace {

constexpr const char* kExec[] = {
    "read memory 0 d0000000 2000",
    "read memory 1 e3100000 260 ne",
    "read memory 0 d0000000 1200 fe",
    "read sbr",
    "write memory 0 d0000000 300 01:02:03:04",
    "write memory 1 d0000000 4 12345678",
    "show gfast-counters 0",
    "show gfast-counters 1 fe",
    "show network-info",
    "show device-info",
    "show device-info 1",
    "show inventory 0",
    "show inventory 1",
    "show remote-management-counters",
    "show pmd-test-parameters 1",
    "show ETR 0",
    "show ETR 1",
    "show dictionary",
    "show params 0",
    "show BITSps 0 us",
    "show BITSps 0 ds",
    "show BITS-RMCps 1 ds bits.txt",
    "show SNRps 0 us",
    "show SNRps 0 ds",
    "show SNRps 1 us",
    "show ALNps 0 us",
    "show ALNps 0 ds",
    "show HLOGps 0 us",
    "show HLOGps 1 us hlog.txt",
    "show SATN 0 us",
    "show SATN 0 ds",
    "show init-failure-cause",
    "show init-failure-cause 1",
    "show pm-counters 0",
    "show 15min-counters",
    "show 15min-counters 1 0",
    "show 24hr-counters 0 0",
    "show version",
    "show afe-params",
    "show afe-params 0 fe",
    "show log-level",
    "show extcom-results",
    "show vectoring canceler 0 canceler.txt",
    "show vectoring precoder 1 precoder.txt",
    "show phy info",
    "show phy info 0 fe",
    "show phy params 0",
    "show line state",
    "show line performance-counters 0",
    "show line performance-counters 1 fe",
    "show line status 0",
    "show line status 1",
    "show line config 0",
    "show line config 1",
    "show system restart-state",
    "show channel status 0 us",
    "show channel status 0 ds",
    "show channel performance-counters 0 ne",
    "show channel performance-counters 1 fe",
    "show number 15min-intervals",
    "show number 24hr-intervals 1",
    "show number devices",
    "show number lines",
    "show number reboots",
    "set log-level 2",
    "set inventory 0 01:02:03:04:05:06:07:08 serial-number",
    "dump 15min-history 0",
    "restart line all",
    "restart system",
    "restart system T 1",
    "activate line all",
    "deactivate line 0",
    "start logging 3",
    "start extcom-test",
    "stop logging",
    "rediscover",
    "reboot B0 1",
    "reboot",
    "sleep 3",
    "erase flash",
    "run script.txt 2",
    "test afe-loop 0 1",
    "test afe-mtpr 0 1 signal.txt",
    "test afe-mtpr-loop 0 1 2",
    "transmit signal 0",
    "transmit signal 1 signal.txt",
    "receive signal 1",
    "generate signal",
    "analyze crashdump 1 dump.txt report.txt",
};

// In the boot loader, or the ROM.
SweptCommand booted(const char* stage, const char* line) {
  return {std::string("reboot ") + stage + "\nsleep 3\n", line, MODE_EXEC};
}

constexpr const char* kConfiguration[] = {
    "TARSNRM us 77",
    "Mds 20",
    "CE 10",
    "FEXT_CANCEL_ENABLE ds T",
    "SRA_ENABLE us F",
    "CARMASK ds 1 100 200",
    "PSDMASK us 2 300 40",
    "RFIBAND 3 400 500",
    "IARBANDS 4095",
    "UPBOPSDA 4095",
    "UPBOPSDB 1",
    "UPBOKL 1280",
    "UPBOKLF T",
    "UPBOKLREF 18",
    "MAXNDR ds 4294967295",
    "INPMIN_SHINE us 520",
    "INPMIN_REIN ds 63",
    "IAT_REIN us 3",
    "SHINERATIO ds 100",
    "RTX_TESTMODE us T",
    "BLUPPERLIMIT ds 12",
    "DELAYMAX us 252",
    "MAXSNRM ds 310",
    "MINSNRM us 310",
    "SRA_USNRM ds 310",
    "SRA_UTIME us 16383",
    "SRA_DSNRM ds 310",
    "SRA_DTIME us 16383",
    "FRA_TIME ds 8",
    "FRA_NTONES us 100",
    "FRA_RTXUC ds 1023",
    "FRA_VENDISC us T",
    "REINIT_TIME_THRESHOLD ds 31",
    "LOS_PERSISTENCY us 20",
    "LOM_PERSISTENCY ds 20",
    "LOR_PERSISTENCY us 20",
    "LOW_ETR_THRESHOLD ds 30",
    "MINETR us 1000",
    "MAXATP ds -310",
    "RNRATIO us 8",
    "TPS_TESTMODE T",
    "DRA_TESTMODE F",
    "ACEMODE 1",
    "ACEP2N2 1",
    "ALLOWACEON 0",
    "DTA_MODE 2",
    "MINMds 30",
    "MAXMds 5",
    "cDTA_MAXMds 8",
    "cDTA_MINMds 30",
    "cDTA_ENABLE T",
    "TARSNRM_RMC ds 310",
    "MINSNRM_RMC us 310",
    "MAXBL_RMC ds 6",
    "restore",
    "save 0",
    "show",
    "get 1",
};

std::vector<SweptCommand> listOfCommands() {
  std::vector<SweptCommand> commands;
  for (const char* const line : kExec) {
    commands.push_back({"", line, MODE_EXEC});
  }
  for (const char* const line :
       {"upgrade bootloader boot.bin", "upgrade manufacturer-block block.bin", "upgrade firmware app.bin",
        "erase bootloader", "erase manufacturer-block", "erase firmware"}) {
    commands.push_back(booted("B1", line));
  }
  commands.push_back(booted("B0", "load bootloader boot.bin"));
  for (const char* const line : kConfiguration) {
    commands.push_back({"", line, MODE_CONFIG});
  }
  return commands;
}

void writeFile(const char* name, std::span<const uint8_t> bytes) {
  std::ofstream(name).write(reinterpret_cast<const char*>(bytes.data()),
                            static_cast<std::streamsize>(bytes.size()));
}

}  // namespace

const std::vector<SweptCommand>& sweptCommands() {
  static const std::vector<SweptCommand> commands = listOfCommands();
  return commands;
}

void writeSweptFiles() {
  const std::vector<uint8_t> payload(3000, 0x5A);
  writeFile("app.bin",
            makeFirmware(FirmwareKind::kApplication, {1, 9, 5, 106}, "2024-05-02T09:15:00", payload));
  writeFile("boot.bin",
            makeFirmware(FirmwareKind::kBootloader, {1, 2, 2, 0}, "2024-05-02T09:15:00", payload));
  writeFile("block.bin", payload);
  std::ofstream("script.txt") << "show version\nread sbr\n";
  std::ofstream signal("signal.txt");
  for (int i = 0; i < 2048; i++) {
    signal << "0FFF" << 1000 + i << '\n';
  }
  std::ofstream("dump.txt") << "e3100000: 00000001\ne3100004: 00000002\n";
}

std::string missingCommands() {
  std::string missing;
  for (const gfast::console::Command& row : gfast::console::commandTable()) {
    const std::string path = std::string(row.path) + ' ';
    const bool typed = std::ranges::any_of(sweptCommands(), [&](const SweptCommand& command) {
      return command.mode == row.mode && (command.line + ' ').starts_with(path);
    });
    if (row.handler != nullptr && !typed) {
      missing += std::string(row.path) + '\n';
    }
  }
  return missing;
}
