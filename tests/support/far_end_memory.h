// Exchanges that read memory of the far end.
#pragma once

#include "support/driver_script.h"

using namespace gfast;

// The header of a request and of its answer. Every process numbers its exchanges from 1.
Bytes farEndHeader(uint16_t opcode, size_t length, uint16_t sequence, uint32_t address);

Bytes readAnswer(uint16_t sequence, uint32_t address, const Bytes& data);

// One exchange, whatever the answer.
Script asksFarEndMemory(int device, uint16_t sequence, uint32_t address, size_t length, const Bytes& answer);

Script readsFarEnd(int device, uint16_t sequence, uint32_t address, const Bytes& data);

// Whether the call is such an exchange.
bool isFarEndMemory(const ExpectedCall& call);
