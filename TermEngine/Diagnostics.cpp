#include "TermEngine/Diagnostics.h"

#include <atomic>

namespace term {
namespace {

std::atomic<DiagnosticSink> diagnosticSink{nullptr};

} // namespace

void setDiagnosticSink(DiagnosticSink sink) {
    diagnosticSink = sink;
}

void logDiagnostic(std::string_view message) {
    if (const DiagnosticSink sink = diagnosticSink) {
        sink(message);
    }
}

} // namespace term
