#ifndef QZXMLAVX2STEPS_H
#define QZXMLAVX2STEPS_H

#include <cstdint>

/// The character checks' vector steps with AVX2, thirty-two bytes a step. Its source alone
/// is built for AVX2: call it only where the processor has it.
class QzXmlAvx2Steps {
public:
    using Byte = unsigned char;

    /// How far steps went: to `at`, which is a stop when `stop` (with nothing amiss before it).
    struct Reach {
        const Byte* at;
        bool stop;
    };

    /// Steps from p, which must start a character, over text whose characters are all ones
    /// XML allows: up to the first "<", "&" or "]" (when markup) or control other than tab,
    /// line feed and carriage return, when nothing is amiss before it; else to the start of
    /// the step where something is, or where fewer than thirty-two bytes are left.
    static Reach cleanSteps(const Byte* p, const Byte* last, bool markup);
    /// How far a step at `step` lets text run, given the bits of its stops and of its faults:
    /// to its first stop when no fault comes at or before it (a fault shows at the latest where
    /// a stop interrupts a sequence), else to the step's start.
    static Reach reachIn(const Byte* step, std::uint32_t stops, std::uint32_t faults) {
        if ((stops & (faults - 1) & ~faults) == 0) return {step, false};
        return {step + __builtin_ctz(stops), true};
    }
};

#endif
