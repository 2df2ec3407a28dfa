#!/usr/bin/env python3
"""Plays the example day and fails unless it still shows what it is there to show: examples_meet_every_rule.py HOST DAY

A change of the library that lets a refused order of the day through, or refuses the ordinary ones, is caught here with
the name of the rule; the day's exact answers are nobody's concern.
"""
import json
import subprocess
import sys

# A rule, a test of the product or a test of the hierarchy: its code, and words that its short and long texts share.
REFUSALS = [
    (-229, "Net Quantity"), (-205, "Max. Single Transaction Value"), (-206, "Max. Single Transaction Qty"),
    (-205, "Minimum. Single Transaction Value"), (-206, "Min. Single Transaction Qty"), (-202, "Gross Exposure"),
    (-203, "Net Exposure"), (-221, "Net Sale Exposure"), (-201, "Net Position"), (-220, "Pending Order"),
    (-204, "Turnover"), (-222, "MTM Loss"), (-222, "User is in SquareOff mode"), (-222, "MTM Pre AutoSquareOff Mode"),
    (-222, "MTM AutoSquareOff Mode"),
    (-227, "|Margin Limit exceeded.Set="), (-227, "|Margin Limit exceeded. Set = "),
    (-227, "|Margin Limit exceeded for Margin Plus Order"), (-227, "|ISIN Code Not Available"),
    (-227, "|Delivery Order Sell Qty Limit exceeded QTY (DP+SAR) Set = 60, Net Used = 61 "),
    (-227, "|Fresh SELL order not allowed for MTF"), (-227, "|Only Square Off Orders allowed for MTF"),
    (0, "Only Delivery Order Allowed"), (-227, "Delivery Order Not Allowed for the scrip - IDEA"),
    (-227, "Wrong Price for Margin Plus Buy Order"), (-227, "Trigger Price and Limit Price should not be equal"),
    (-227, "Trigger Price out of range"), (-227, "Min. Margin Plus Order Value"),
    (-227, "Margin+ Order Not Allowed for the scrip - "), (-227, "Product Scrip Basket Info not available"),
    (-227, "MTF Order Not Allowed for the scrip - "), (-227, "AMO Order Preference Not Set"),
    (-227, "AMO Pro Delivery Order Not Allowed"),
    *((-227, f"{product} Order Not Allowed for ") for product in ("Margin", "Margin+", "Delivery", "MTF", "AMO Margin")),
    *((-208, f"|Limits not Set or Invalid {level} Code : ")
      for level in ("Group", "Dealer", "Family", "Client", "Sub Client", "dealer")),
    *((-208, f"|Relevant Limits not Set for {level} Code : ") for level in ("Group", "Family", "Client", "Sub Client")),
    (-208, "|Relevant Limits not Set for Dealer Code : W303 "), (-208, "|Relevant Limits not Set for Dealer Code : - "),
]
# Products of which an order must stand: margin, delivery, two legs, margin funding, after-market.
PRODUCTS = {1, 2, 4, 8, 9, 10}
LEVELS = ["subClientCode", "clientCode", "familyCode", "dealerCode", "groupCode"]
LEAST = {"orders": 400, "scrips": 60, "groupCode": 3, "dealerCode": 6, "clientCode": 40}
MOST_REFUSED = 0.15


def play(host, day):
    """The calls of the day with their answers."""
    with open(day) as file:
        calls = [json.loads(line) for line in file if line.strip() and not line.startswith("#")]
    calls = [call for call in calls if call["call"] != "@clock"]
    run = subprocess.run([host, "replay", day], capture_output=True, text=True)
    if run.returncode != 0:
        sys.exit(f"exit status {run.returncode}: {run.stderr}")
    return list(zip(calls, map(json.loads, run.stdout.splitlines()), strict=True))


def faults(played):
    orders = [(call, answer) for call, answer in played
              if call["call"] == "CheckSurveillance" and not call.get("probe")]
    accepted = [call for call, answer in orders if answer["status"] == 1]
    refused = [(call, answer) for call, answer in orders if answer["status"] != 1]

    for code, words in REFUSALS:
        if not any(answer.get("errorCode", 0) == code and words in answer["errorText"] for _, answer in refused):
            yield f"no refusal {code} '{words}'"
    judged = [(call["request"], answer["failedLevelCode"]) for call, answer in refused if answer["status"] == -312]
    for level in LEVELS:
        if not any(request.get(level) == code for request, code in judged):
            yield f"no limit refused at a {level}"
    if not any(code == "-" for _, code in judged):
        yield "no limit refused at the root"

    for product in PRODUCTS - {call["order"]["productType"] for call in accepted}:
        yield f"no order of product {product} stands"

    # Mistyped codes are no entities, so only what was accepted counts.
    counts = {name: len({call["request"].get(name) for call in accepted} - {None}) for name in LEVELS}
    counts |= {"orders": len(orders),
               "scrips": len({(call["order"]["exchangeMask"], call["request"]["token"]) for call in accepted})}
    for name, least in LEAST.items():
        if counts[name] < least:
            yield f"{counts[name]} of {name}, fewer than {least}"
    if len(refused) > MOST_REFUSED * len(orders):
        yield f"{len(refused)} of {len(orders)} orders refused"
    for call, answer in played:
        if "result" in answer and answer["result"] != 0 and not reads_removed_row(call):
            yield f"{json.dumps(call)} failed: {json.dumps(answer)}"


def reads_removed_row(call):
    """The one call that is meant to fail: it shows that the row is gone."""
    return call["call"] == "GetSurveillancePositions" and call["limit"]["token"] != -9


def main():
    found = list(faults(play(*sys.argv[1:])))
    print("\n".join(found) or "every rule met")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
