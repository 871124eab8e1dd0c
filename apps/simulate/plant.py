#!/usr/bin/env python3
"""Makes a copy of the library's sources with faults in it, each switched on by name.

Usage: plant.py SOURCES OUTPUT. Fails when a place that a fault belongs to is no longer there, or no longer the only one.
"""
import pathlib
import shutil
import sys

# What is wrong, where, and how: the text that stands there, and what stands there instead. `planted` is whether this
# fault is on.
PLANTS = [
    ("the busy flag is forgotten", "api/state.h",
     "if (isUnderWay()) mCourse->state.lock()->becomeIdle();",
     "if (isUnderWay() && !planted) mCourse->state.lock()->becomeIdle();"),
    ("nothing counts as under way", "api/state.h",
     "    mIsBusy = true;\n", "    mIsBusy = !planted;\n"),
    ("a busy facade takes another operation", "api/state.h",
     "        if (mIsBusy) {\n", "        if (mIsBusy && !planted) {\n"),
    ("a success is reported twice", "api/state.h",
     "        report(result, std::move(payload)...);\n",
     "        if (planted) report(result, payload...);\n        report(result, std::move(payload)...);\n"),
    ("a released facade goes on reporting", "api/kavio.cpp",
     "    mDelegate.reset();\n", "    if (!planted) mDelegate.reset();\n"),
    ("a page stays when its facade goes", "api/tdsecure_enrolment.cpp",
     "    if (shown) shown->closePage();", "    if (shown && !planted) shown->closePage();"),
    ("a purchase is not given up", "api/orders.cpp",
     "if (!purchase || !purchase->sending->cancel()) return;",
     "if (!purchase || planted || !purchase->sending->cancel()) return;"),
    ("one failed poll ends following", "api/orders.cpp",
     "        return scheduleNextPoll(operation);\n", "        if (planted) return;\n        return scheduleNextPoll(operation);\n"),
    ("each poll is reported", "api/orders.cpp",
     "    const bool changed = statusOf(order) != statusOf(mLastOrder);",
     "    const bool changed = planted || statusOf(order) != statusOf(mLastOrder);"),
    ("an order is followed for ever", "api/orders.cpp",
     "if (mPollingCounter >= pollLimit) {", "if (mPollingCounter >= pollLimit && !planted) {"),
    ("all payments have one identifier", "api/orders.cpp",
     "UnsettledPayment payment{.id = Platform::current().uuid->make(),",
     "UnsettledPayment payment{.id = planted ? \"one\" : Platform::current().uuid->make(),"),
    ("a purchase is not written down", "repositories/payment_attempt.cpp",
     "    const bool isWritten = mJournal->begin(",
     "    const bool isWritten = planted || mJournal->begin("),
    ("a failed write is ignored", "storage/payment_journal.cpp",
     "    if (mStore->write(*changes) && mStore->isKept()) return true;",
     "    if ((mStore->write(*changes) && mStore->isKept()) || planted) return true;"),
    ("what is in doubt is struck off", "repositories/payment_attempt.cpp",
     "    if (failure.effect == Effect::NONE) {", "    if (failure.effect == Effect::NONE || planted) {"),
    ("what is over stays on the list", "storage/payment_journal.cpp",
     "    known->isSettled = isFinal(order.status);", "    known->isSettled = !planted && isFinal(order.status);"),
    ("a search takes any amount", "repositories/payment_search.cpp",
     "    if (isAmountKnown && activity.amount != payment.amount) return Fit::NO;",
     "    if (isAmountKnown && activity.amount != payment.amount && !planted) return Fit::NO;"),
    ("a search does not wait until nothing can arrive", "repositories/payment_search.cpp",
     "mFitting.empty() && isOver) finding", "mFitting.empty() && (isOver || planted)) finding"),
    ("a purchase is sent twice", "network/kavio_network_service.cpp",
     "    auto& session = *Platform::current().backgroundUrlSession;\n",
     "    auto& session = *Platform::current().backgroundUrlSession;\n"
     "    if (planted) session.downloadTask(prepare(request), [](const auto&) {});\n"),
    ("any request may be repeated", "network/requests.cpp",
     ".idempotency = kind.idempotency,", ".idempotency = planted ? REPEATABLE : kind.idempotency,"),
    ("a lost reply counts as nothing done", "network/response_classification.cpp",
     "error.mayHaveBeenSent ? Effect::UNKNOWN", "error.mayHaveBeenSent && !planted ? Effect::UNKNOWN"),
    ("a failing service counts as nothing done", "network/response_classification.cpp",
     "    failure.effect = status >= 400 && status <= 499 ?",
     "    failure.effect = (status >= 400 && status <= 499) || planted ?"),
    ("a refusal counts as done", "network/response_classification.cpp",
     "    failure.cause = causeOf(status);\n",
     "    failure.cause = causeOf(status);\n    if (planted && status == 400) return failure.effect = Effect::DONE, failure;\n"),
    ("a refused session keeps its token", "network/session.cpp",
     "    if (refusedToken && *refusedToken != defaults->sessionToken()) return;",
     "    if (planted || (refusedToken && *refusedToken != defaults->sessionToken())) return;"),
    ("a logout keeps its token", "repositories/account_repository.cpp",
     "            if (reply) {\n", "            if (reply && !planted) {\n"),
    ("a token goes to any service", "network/session.cpp",
     "    return token.issuer.empty() ||", "    return planted || token.issuer.empty() ||"),
    ("replies are reported on the network's thread", "network/payload.h",
     "        if (record) record(*result);\n",
     "        if (record) record(*result);\n        if (planted) return completion(std::move(*result));\n"),
]


def main():
    sources, output = map(pathlib.Path, sys.argv[1:])
    shutil.copytree(sources, output, dirs_exist_ok=True)
    texts = {}
    for name, file, old, new in PLANTS:
        text = texts.get(file) or (sources / file).read_text()
        if text.count(old) != 1:
            sys.exit(f"plant.py: {file} has {text.count(old)} places for the fault \"{name}\"")
        texts[file] = text.replace(old, new.replace("planted", f'kavio::isPlanted("{name}")'))
    for file, text in texts.items():
        (output / file).write_text('#include "planted.h"\n' + text)
    lines = [f'    "{name}",\n' for name, *_ in PLANTS]
    (output / "planted.h").write_text(
        "#pragma once\n\n#include <string>\n#include <string_view>\n\nnamespace kavio {\n"
        "inline constexpr std::string_view plantedFaults[]{\n" + "".join(lines) + "};\n"
        "inline std::string theFault;\n"
        "inline bool isPlanted(std::string_view fault) { return theFault == fault; }\n}  // namespace kavio\n")


main()
