#!/usr/bin/env python3
"""A host in Python: the same day as host.cpp, by ctypes through the functions of surveillance_c.h.

usage: host.py RECORDS_H [LIBRARY]      the installed surveillance/records.h; libsurveillance.so.0 by default"""
import ctypes
import re
import sys

KINDS = {"char": ctypes.c_char, "int16_t": ctypes.c_int16, "int32_t": ctypes.c_int32, "uint8_t": ctypes.c_uint8,
         "double": ctypes.c_double, "float": ctypes.c_float}
SETTLEMENT_OF_NSE_CASH, TOKEN = 3, 2885
ALL_SECURITIES, NSE_CASH, BUY, MARGIN, PASS, NO_LEVEL = -9, 1, 1, 1, 1, 255  # as in surveillance_c.h
LIMIT_ROW, POSITION_ROW, BREACH_ROW = 0, 1, 2


def records(header):
    """The packed records that the header declares, by name."""
    found = dict(KINDS)
    for name, body in re.findall(r"^struct SURVEILLANCE_PACKED (\w+) \{(.*?)^\};", open(header).read(), re.S | re.M):
        fields = [(field, found[kind] * int(count) if count else found[kind])
                  for kind, field, count in re.findall(r"^\s+(\w+) (\w+)(?:\[(\d+)\])?;", body, re.M)]
        found[name] = type(name, (ctypes.LittleEndianStructure,), {"_pack_": 1, "_fields_": fields})
    return found


def put(record, **values):
    for field, value in values.items():
        setattr(record, field, value)
    return record


class Host:
    def __init__(self, header, library):
        self.records = records(header)
        self.surv = ctypes.CDLL(library)
        for name in ("surv_ListNew", "surv_ListHead", "surv_ListNext", "surv_RowNew"):
            getattr(self.surv, name).restype = ctypes.c_void_p  # an int would cut the address
        for name in ("surv_InitializeSurvManager", "surv_CheckSurveillance", "surv_UpdateSurveillance"):
            getattr(self.surv, name).restype = ctypes.c_short
        window = ctypes.CFUNCTYPE(None, ctypes.c_void_p, ctypes.c_uint, ctypes.c_uint, ctypes.c_char_p)
        self.window = window(lambda context, message, param, text: print("!", text.decode("latin-1")))
        self.surv.surv_SetHostWindow(self.window, None)  # kept in self: the library goes on calling it

    def list(self):
        return ctypes.c_void_p(self.surv.surv_ListNew())

    def free(self, rows, kind):
        self.surv.surv_ListFreeRows(kind, rows)
        self.surv.surv_ListDelete(rows)

    def walk(self, rows, record):
        at = ctypes.c_void_p(self.surv.surv_ListHead(rows))
        while at:
            yield self.records[record].from_address(self.surv.surv_ListNext(rows, ctypes.byref(at)))

    def add_row(self, rows, kind, record):
        row = self.surv.surv_RowNew(kind)
        self.surv.surv_ListAdd(rows, ctypes.c_void_p(row))
        return self.records[record].from_address(row)

    def add_limit_row(self, rows, entity, **limits):
        """A row across all securities with these limits; the library makes it without any."""
        row = self.add_row(rows, LIMIT_ROW, "BKSurveillanceLimitDefTag")
        put(row, entityCode=entity, token=ALL_SECURITIES, limitMask=SETTLEMENT_OF_NSE_CASH, **limits)

    def start(self):
        """In positionMode 1 the library frees each row as it takes it in; what a failed start leaves is the host's."""
        limits, positions = self.list(), self.list()
        for entity in (b"-", b"G1", b"D1"):
            self.add_limit_row(limits, entity)
        held = 9900.0 * 100  # paise, by the position below
        self.add_limit_row(limits, b"C1", maxSingleOrderQty=500, grossExposureLimit=80000 * 100.0, usedGrossOrder=held,
                           usedGrossTraded=held, usedMaxGross=held)
        row = put(self.add_row(positions, POSITION_ROW, "BKExposureTag"), levelCode=b"C1", groupCode=b"G1",
                  accountCode=b"C1", clientLevelType=2, marketSegment=1, limitMask=SETTLEMENT_OF_NSE_CASH, token=TOKEN,
                  priceMultiplier=1, orderBuyQty=100, tradedBuyQty=100, orderBuyValue=held, tradedBuyValue=held)
        put(row.contract, symbol=b"SCRIP", series=b"EQ")
        result = self.surv.surv_InitializeSurvManager(limits, positions, 0, 1, 0, 0, 1, 0, 0, None, None, None)
        self.free(limits, LIMIT_ROW)
        self.free(positions, POSITION_ROW)
        return result

    def request(self, message, *kinds):
        """A head and the records behind it, without a gap."""
        fields = [("head", self.records["tagSurveillanceInfo"])] + [(kind, self.records[kind]) for kind in kinds]
        request = type("Request", (ctypes.LittleEndianStructure,), {"_pack_": 1, "_fields_": fields})()
        put(request.head, messageCode=message, exchangeMask=NSE_CASH, token=TOKEN, priceMultiplier=1, groupCode=b"G1",
            dealerCode=b"D1", clientCode=b"C1", clientType=2, subClientType=NO_LEVEL, levelCheckFlags=0x3E)
        for kind in kinds:
            record = put(getattr(request, kind), exchangeMask=NSE_CASH, clientAccount=b"C1", buySell=BUY, productType=MARGIN)
            put(record.contract, symbol=b"SCRIP", series=b"EQ")
        return request

    def send_order(self, quantity):
        request = self.request(2000, "tagOrderRequest")
        put(request.tagOrderRequest, accountText=b"C1", proClient=1, quantity=quantity, price=10000)
        error, status = self.records["tagOrdErrMessage"](), ctypes.c_short()
        touched, undone = self.list(), self.list()
        if self.surv.surv_CheckSurveillance(ctypes.byref(request), ctypes.byref(error), ctypes.byref(status), touched,
                                            None, undone, 0) == 0:
            print(f"order of {quantity}:", f"accepted, {self.surv.surv_ListCount(touched)} limit rows touched"
                  if status.value == PASS else f"refused {error.errorCode}, {error.errorText.decode('latin-1')}")
        self.free(touched, LIMIT_ROW)
        self.free(undone, BREACH_ROW)

    def send_trade(self, quantity, price_paise, ordered):
        """Of an open order for `ordered` shares at 100.00 `quantity` have traded."""
        event = self.request(2222, "tagTradeInfo", "tagOrderInfo")
        event.head.levelMarginFlags = 0x80  # the stored order follows
        put(event.tagTradeInfo, tradedQuantity=quantity, tradePrice=price_paise)
        put(event.tagOrderInfo, accountText=b"C1", proClient=1, price=10000, orderStatus=1, quantity=ordered,
            quantityRemaining=ordered)
        touched = self.list()
        result = self.surv.surv_UpdateSurveillance(ctypes.byref(event), None, touched, None, 0)
        print(f"trade of {quantity}:", "taken in" if result == 0 else "not done")
        self.free(touched, LIMIT_ROW)

    def show_client(self):
        codes = [ctypes.create_string_buffer(code) for code in (b"C1", b"G1", b"C1")]
        screen = self.list()
        self.surv.surv_GetNetPositionInfoFromDll(5, *codes, TOKEN, SETTLEMENT_OF_NSE_CASH, screen, 0, 1)
        for held in self.walk(screen, "BKExposureTag"):
            print(f"C1 holds {held.tradedBuyQty} of {held.contract.symbol.decode()}"
                  f" for {held.tradedBuyValue / 100:.2f} rupees")
        self.free(screen, POSITION_ROW)


def main():
    if len(sys.argv) not in (2, 3):
        sys.exit(__doc__)
    host = Host(sys.argv[1], sys.argv[2] if len(sys.argv) == 3 else "libsurveillance.so.0")
    host.send_order(1)  # too early, and the library says so
    if host.start() != 0:
        sys.exit(1)
    host.send_order(400)
    host.send_trade(60, 9950, 400)
    host.send_order(600)
    host.send_order(400)
    host.show_client()
    host.surv.surv_CleanupSurvManager()


if __name__ == "__main__":
    main()
