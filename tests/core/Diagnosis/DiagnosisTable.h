// A table of evidence and what is said of it.
#pragma once

#include "core/Diagnosis/Diagnosis.h"
#include "tests/core/Diagnosis/SomeEvidence.h"
#include "tests/support/CaseName.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace tarnwick::test {

struct DiagnosisCase {
    std::string name;
    Evidence evidence;
    std::string told; ///< "provider likely: Your router ...", or "nothing"
};

class DiagnosisTable : public testing::TestWithParam<DiagnosisCase> {
protected:
    static std::string told(const Evidence& evidence) {
        const auto verdict = diagnose(evidence);
        if (!verdict) {
            return "nothing";
        }
        return std::string(nameOf(verdict->blame)) + " " + std::string(nameOf(verdict->likelihood)) + ": "
               + verdict->evidence;
    }
};

/// `evidence` with something changed.
template<class Change>
Evidence with(Evidence evidence, Change change) {
    change(evidence);
    return evidence;
}

inline Evidence overWifi(Evidence evidence, int signalDbm) {
    return with(std::move(evidence), [&](Evidence& it) {
        it.link->kind = LinkEvidence::Kind::wifi;
        it.link->signalDbm = signalDbm;
    });
}

} // namespace tarnwick::test
