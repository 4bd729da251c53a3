#pragma once

#include "receiver/decoder/CycleClock.h"
#include "receiver/decoder/PacketEvidence.h"

namespace zor::receiver {

/// Tells the evidence what a clock has just said about a frame of a source.
void noteFit(const CycleClock& clock, CycleClock::Fit fit, Source source, PacketEvidence& evidence);

}  // namespace zor::receiver
