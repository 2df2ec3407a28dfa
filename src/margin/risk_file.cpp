// The messages of a risk parameter file, and the swap at its end.

#include <array>
#include <cstring>

#include "margin/recompute.h"
#include "service/library.h"

namespace surv {
namespace {

/// A message as it came: the head, and the body behind it.
struct RiskMessage {
    tagRPFHeader head;
    const char* body;

    template <class Body>
    [[nodiscard]] Body As() const {
        Body value;
        std::memcpy(&value, body, sizeof value);
        return value;
    }
};

struct RiskIntake {
    Library& library;
    RiskParameters& risk;
    CRPFParameterTable& target;

    void Tell(const char* text) const { library.context.window.Notify(text); }
};

void Nothing(RiskIntake&, const RiskMessage&) {}

void TakeFileDetails(RiskIntake& intake, const RiskMessage& message) {
    intake.target.fileDetails = message.As<tagRPFFileDetails>();
}
void StartUnderlyings(RiskIntake& intake, const RiskMessage&) { intake.risk.underlyingCount = 0; }
void EndUnderlyings(RiskIntake& intake, const RiskMessage& message) {
    if (message.As<std::int32_t>() != intake.risk.underlyingCount) intake.Tell("Number of underlyings incorrect");
}
/// Counted whether it is stored or not.
void TakeUnderlying(RiskIntake& intake, const RiskMessage& message) {
    ++intake.risk.underlyingCount;
    if (!intake.target.StoreUnderlying(message.As<tagRPFUnderlyingRecord>(), message.head.segment)) {
        intake.Tell("Update of underlying info failed");
    }
}
void StartContracts(RiskIntake& intake, const RiskMessage&) { intake.risk.contractCount = 0; }
void EndContracts(RiskIntake& intake, const RiskMessage& message) {
    if (message.As<std::int32_t>() != intake.risk.contractCount) intake.Tell("Number of contracts incorrect");
}
/// Counted whether it is stored or not.
void TakeContract(RiskIntake& intake, const RiskMessage& message) {
    ++intake.risk.contractCount;
    if (!intake.target.StoreContract(message.As<tagRPFContractRecord>(), message.head.segment)) {
        intake.Tell("Update of contract info failed");
    }
}

/// The records move into the live table, under the segment that the end message names, and every position that they
/// concern is margined anew. Where memory runs out, what is done stands, and the file waits for another end message.
void EndFile(RiskIntake& intake, const RiskMessage& message) {
    RiskParameters& risk = intake.risk;
    Library& library = intake.library;
    risk.live.fileDetails = risk.staging.fileDetails;
    for (const auto& underlying : risk.staging.underlyings) {
        risk.live.StoreUnderlying(underlying.value->record, message.head.segment);
        for (const auto& contract : underlying.value->contracts) {
            risk.live.StoreContract(contract.value->record, message.head.segment);
        }
    }
    if (library.context.settings.started) {
        CMarginRun run(*library.manager);
        for (const auto& underlying : risk.staging.underlyings) {
            for (const auto& contract : underlying.value->contracts) run.Add(*underlying.value, *contract.value);
        }
    }
    risk.staging.Clear();
}

struct MessageKind {
    std::int16_t code;
    std::int16_t length;  ///< head and body
    const char* wrongLength;
    void (*take)(RiskIntake&, const RiskMessage&);
};
constexpr std::int16_t kHead = sizeof(tagRPFHeader);
template <class Body>
constexpr std::int16_t kHeadAnd = kHead + sizeof(Body);
constexpr std::array kMessageKinds{
    MessageKind{28001, kHead, "Invalid Start Of RPF Details", &Nothing},
    MessageKind{28002, kHead, "Invalid End Of RPF Details", &EndFile},
    MessageKind{28003, kHeadAnd<tagRPFFileDetails>, "Invalid RPF File Details", &TakeFileDetails},
    MessageKind{28004, kHead, "Invalid start of underlying info", &StartUnderlyings},
    MessageKind{28005, kHeadAnd<std::int32_t>, "Invalid end of underlying info", &EndUnderlyings},
    MessageKind{28006, kHeadAnd<tagRPFUnderlyingRecord>, "Invalid underlying info", &TakeUnderlying},
    MessageKind{28007, kHead, "Invalid start of contract info", &StartContracts},
    MessageKind{28008, kHeadAnd<std::int32_t>, "Invalid end of underlying info", &EndContracts},
    MessageKind{28009, kHeadAnd<tagRPFContractRecord>, "Invalid contract info", &TakeContract},
};

/// Null for a code that no file has.
const MessageKind* KindOf(std::int16_t code) {
    for (const MessageKind& kind : kMessageKinds) {
        if (kind.code == code) return &kind;
    }
    return nullptr;
}

}  // namespace

std::int16_t Library::ProcessRPFInfo(const char* message, std::int32_t length, bool toStaging) {
    constexpr std::size_t kCodeAt = offsetof(tagRPFHeader, messageCode);
    constexpr std::int32_t kHoldsCode = kCodeAt + sizeof(std::int16_t);
    if (!message || length < kHoldsCode) return kNotDone;
    std::int16_t code = 0;
    std::memcpy(&code, message + kCodeAt, sizeof code);
    const MessageKind* kind = KindOf(code);
    if (!kind) return kDone;

    RiskMessage received{{}, message + kHead};
    const bool hasHead = length >= kHead;
    if (hasHead) std::memcpy(&received.head, message, kHead);
    if (!hasHead || received.head.messageLength != kind->length || length < kind->length) {
        context.window.Notify(kind->wrongLength);
        return kNotDone;
    }
    RiskIntake intake{*this, context.risk, toStaging ? context.risk.staging : context.risk.live};
    kind->take(intake, received);
    return kDone;
}

}  // namespace surv
