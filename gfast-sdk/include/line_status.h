// How a line is, what each direction of it carries, and who is at its ends (ITU-T
// G.997.2).
#pragma once

#include <cstdint>

// Initialisation success/failure cause (ITU-T G.997.2). A chip may say others.
using G9972_initSuccessFailureCause_t = uint32_t;
enum : G9972_initSuccessFailureCause_t {
  E_INITSFCAUSE_SUCCESSS = 0,
  E_INITSFCAUSE_CONFIG_ERROR = 1,
  E_INITSFCAUSE_CONFIG_NOT_FEASIBLE = 2,
  E_INITSFCAUSE_COMM_PROBLEM = 3,
  E_INITSFCAUSE_NO_FAR_END_FTU_DETECTED = 4,
  E_INITSFCAUSE_OTHER = 5
};

using G9972_initLastSignal_t = uint8_t;
using G9972_DataRate_t = uint32_t;  // kbit/s
using QVR_wireLength_t = uint32_t;

// Power state of the link (ITU-T G.997.2).
enum G9972_LINK_STATE_t : uint32_t { L0N = 0, L21N = 1, L21B = 2, L22B = 3, L3 = 4 };

// What a margin or a power shows that is not available.
constexpr int16_t QVR_K_LEVEL_NOT_AVAILABLE = -512;

struct QVR_lineStatus_t {
  G9972_initSuccessFailureCause_t INITSFCAUSE;
  G9972_initLastSignal_t INITLASTSIGNALds;  // last signal of the initialisation sent downstream
  G9972_initLastSignal_t INITLASTSIGNALus;
  G9972_LINK_STATE_t LINK_STATE;
  int16_t SNRMds;  // noise margin, 0.1 dB
  int16_t SNRMus;
  uint16_t UPBOKLE;    // estimated electrical length, 0.1 dB
  uint16_t UPBOKLE_R;  // the same as the far end estimates it
  int16_t ACTATPds;    // actual aggregate transmit power, 0.1 dBm
  int16_t ACTATPus;
  int16_t SNRM_RMCds;  // noise margin of the RMC, 0.1 dB
  int16_t SNRM_RMCus;
  QVR_wireLength_t EWL;   // estimated wire length: 256 without time gap correction, a plain number
  uint8_t DTAMds;         // downstream symbols under dynamic time assignment at present
  uint32_t DTAMdsEVTCNT;  // exchanges of that number
};

// One direction.
struct QVR_channelStatus_t {
  G9972_DataRate_t NDR;     // net data rate
  G9972_DataRate_t ATTNDR;  // attainable net data rate
  G9972_DataRate_t ETR;     // expected throughput
  G9972_DataRate_t GDR;     // gamma data rate
  uint8_t DTU_NFEC;         // Reed-Solomon codeword size, bytes
  uint8_t DTU_RFEC;         // redundancy of a codeword, bytes
  uint8_t DTU_Q;            // codewords a data transfer unit
};

// One end (ITU-T G.997.2). Bytes as the equipment gives them: texts end at their first zero byte
// or fill the field.
struct QVR_inventoryParameters_t {
  char GHS_VENDOR[8];  // ITU-T G.994.1 vendor id
  char VERSION[16];
  char SYSTEM_VENDOR[8];
  char SERIALNR[32];
};

struct QVR_inventoryObject_t {
  QVR_inventoryParameters_t FTU_O;  // network end
  QVR_inventoryParameters_t FTU_R;  // subscriber end
};

// The inventory area of a line: the local end's record, then the far end's response as it was last received.
constexpr uint32_t VIRT_BASE_ADDR_INVENTORY_READ = 0xF1000000;
constexpr uint32_t VIRT_BASE_ADDR_INVENTORY_PER_LINE_LINK_ID_OFFSET = 20;
constexpr uint32_t VIRT_BASE_ADDR_INVENTORY_PER_LINE_PARAMS(uint32_t linkId) {
  return VIRT_BASE_ADDR_INVENTORY_READ | (linkId << VIRT_BASE_ADDR_INVENTORY_PER_LINE_LINK_ID_OFFSET);
}

// sInventoryDb, the local end's record.
constexpr uint32_t INVENTORY_DB_SIZE = 60;
constexpr uint32_t INVENTORY_DB_FTU_GHS_VENDOR = 0;  // 8 bytes
constexpr uint32_t INVENTORY_DB_FTU_VERSION = 8;     // one word, four version bytes
constexpr uint32_t INVENTORY_DB_SYSTEM_VENDOR = 12;  // 8 bytes
constexpr uint32_t INVENTORY_DB_SYSTEM_SERIAL = 20;  // 32 bytes
constexpr uint32_t INVENTORY_DB_FTU_VENDOR = 52;     // 8 bytes: the far end's G.hs vendor

// INVENTORY_RESPONSE_S, what the far end answers to an inventory request.
constexpr uint32_t INVENTORY_RESPONSE_SIZE = 56;
constexpr uint32_t INVENTORY_RESPONSE_VENDOR_ID = 0;       // 8 bytes
constexpr uint32_t INVENTORY_RESPONSE_VERSION_NUMBER = 8;  // 16 bytes, text
constexpr uint32_t INVENTORY_RESPONSE_SERIAL_NUMBER = 24;  // 32 bytes, text

constexpr uint32_t NE_AND_FE_INVENTORY_SIZE = INVENTORY_DB_SIZE + INVENTORY_RESPONSE_SIZE;
