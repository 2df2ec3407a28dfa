// A host in C: the same day as host.cpp, through surveillance_c.h.
#include <stdio.h>
#include <string.h>

#include "surveillance/surveillance_c.h"

enum { SETTLEMENT_OF_NSE_CASH = 3, TOKEN = 2885 };  // a limit mask, a scrip

// Records are made of zeros, so a text that leaves room for one is whole.
#define PUT(field, text) strncpy((field), (text), sizeof(field) - 1)

static void PutContract(tagContractDescriptor* contract) {
    PUT(contract->symbol, "SCRIP");
    memcpy(contract->series, "EQ", 2);
}

// A row across all securities; the library makes it without a limit.
static BKSurveillanceLimitDefTag* AddLimitRow(CPtrList* limits, const char* entity) {
    BKSurveillanceLimitDefTag* row = surv_RowNew(SURV_LIMIT_ROW);
    if (!row || surv_ListAdd(limits, row) != 0) return NULL;
    PUT(row->entityCode, entity);
    row->token = SURV_ALL_SECURITIES;
    row->limitMask = SETTLEMENT_OF_NSE_CASH;
    return row;
}

// 100 shares that client C1 bought at 99.00.
static void AddPositionRow(CPtrList* positions) {
    BKExposureTag* row = surv_RowNew(SURV_POSITION_ROW);
    if (!row || surv_ListAdd(positions, row) != 0) return;
    PUT(row->levelCode, "C1");
    PUT(row->groupCode, "G1");
    PUT(row->accountCode, "C1");
    row->clientLevelType = 2;
    row->marketSegment = 1;
    row->limitMask = SETTLEMENT_OF_NSE_CASH;
    row->token = TOKEN;
    PutContract(&row->contract);
    row->priceMultiplier = 1;
    row->orderBuyQty = row->tradedBuyQty = 100;
    row->orderBuyValue = row->tradedBuyValue = 9900.0 * 100;
}

// In positionMode 1 the library frees each row as it takes it in; what a failed start leaves in the lists is ours.
static int Start(void) {
    CPtrList* limits = surv_ListNew();
    CPtrList* positions = surv_ListNew();
    AddLimitRow(limits, "-");
    AddLimitRow(limits, "G1");
    AddLimitRow(limits, "D1");
    BKSurveillanceLimitDefTag* client = AddLimitRow(limits, "C1");
    if (!client) return -1;
    client->maxSingleOrderQty = 500;
    client->grossExposureLimit = 80000 * 100.0;
    client->usedGrossOrder = client->usedGrossTraded = client->usedMaxGross = 9900.0 * 100;  // by the position
    AddPositionRow(positions);
    short result = surv_InitializeSurvManager(limits, positions, 0, 1, 0, 0, 1, 0, 0, NULL, NULL, NULL);
    surv_ListFreeRows(SURV_LIMIT_ROW, limits);
    surv_ListFreeRows(SURV_POSITION_ROW, positions);
    surv_ListDelete(limits);
    surv_ListDelete(positions);
    return result;
}

static void PutHead(tagSurveillanceInfo* head, int16_t messageCode) {
    head->messageCode = messageCode;
    head->exchangeMask = SURV_MASK_NSE_CASH;
    head->token = TOKEN;
    head->priceMultiplier = 1;
    PUT(head->groupCode, "G1");
    PUT(head->dealerCode, "D1");
    PUT(head->clientCode, "C1");
    head->clientType = 2;
    head->subClientType = SURV_NO_LEVEL;
    head->levelCheckFlags = 0x3E;  // every level is checked
}

// A purchase of client C1. An order, its stored state and a trade name these fields alike.
#define PUT_PURCHASE(record)                                                                                         \
    (PutContract(&(record).contract), (record).exchangeMask = SURV_MASK_NSE_CASH, PUT((record).clientAccount, "C1"), \
     (record).buySell = SURV_BUY, (record).productType = SURV_PRODUCT_MARGIN)

static void SendOrder(int32_t quantity) {
    struct __attribute__((packed)) {
        tagSurveillanceInfo head;
        tagOrderRequest order;
    } request = {0};
    PutHead(&request.head, 2000);
    PUT_PURCHASE(request.order);
    PUT(request.order.accountText, "C1");
    request.order.proClient = 1;
    request.order.quantity = quantity;
    request.order.price = 10000;
    tagOrdErrMessage error = {0};
    short status = 0;
    CPtrList* touched = surv_ListNew();
    CPtrList* undone = surv_ListNew();
    if (surv_CheckSurveillance(&request.head, &error, &status, touched, NULL, undone, 0) != 0) {
    } else if (status == SURV_STATUS_PASS) {
        printf("order of %d: accepted, %d limit rows touched\n", quantity, surv_ListCount(touched));
    } else {
        printf("order of %d: refused %d, %s\n", quantity, error.errorCode, error.errorText);
    }
    surv_ListFreeRows(SURV_LIMIT_ROW, touched);
    surv_ListFreeRows(SURV_BREACH_ROW, undone);
    surv_ListDelete(touched);
    surv_ListDelete(undone);
}

// Of an open order for `ordered` shares at 100.00 `quantity` have traded.
static void SendTrade(int32_t quantity, int32_t pricePaise, int32_t ordered) {
    struct __attribute__((packed)) {
        tagSurveillanceInfo head;
        tagTradeInfo trade;
        tagOrderInfo stored;
    } event = {0};
    PutHead(&event.head, 2222);
    event.head.levelMarginFlags = 0x80;  // the stored order follows
    PUT_PURCHASE(event.trade);
    event.trade.tradedQuantity = quantity;
    event.trade.tradePrice = pricePaise;
    PUT_PURCHASE(event.stored);
    PUT(event.stored.accountText, "C1");
    event.stored.proClient = 1;
    event.stored.price = 10000;
    event.stored.orderStatus = 1;
    event.stored.quantity = event.stored.quantityRemaining = ordered;
    CPtrList* touched = surv_ListNew();
    short result = surv_UpdateSurveillance(&event.head, NULL, touched, NULL, 0);
    printf("trade of %d: %s\n", quantity, result == 0 ? "taken in" : "not done");
    surv_ListFreeRows(SURV_LIMIT_ROW, touched);
    surv_ListDelete(touched);
}

static void ShowClient(void) {
    char category[] = "C1", group[] = "G1", account[] = "C1";
    CPtrList* screen = surv_ListNew();
    surv_GetNetPositionInfoFromDll(5, category, group, account, TOKEN, SETTLEMENT_OF_NSE_CASH, screen, 0, 1);
    for (SurvPosition at = surv_ListHead(screen); at;) {
        const BKExposureTag* held = surv_ListNext(screen, &at);
        printf("C1 holds %d of %s for %.2f rupees\n", held->tradedBuyQty, held->contract.symbol,
               held->tradedBuyValue / 100);
    }
    surv_ListFreeRows(SURV_POSITION_ROW, screen);
    surv_ListDelete(screen);
}

static void ShowText(void* context, unsigned message, unsigned wParam, const char* text) {
    (void)context, (void)message, (void)wParam;
    printf("! %s\n", text);
}

int main(void) {
    surv_SetHostWindow(ShowText, NULL);
    SendOrder(1);  // too early, and the library says so
    if (Start() != 0) return 1;
    SendOrder(400);
    SendTrade(60, 9950, 400);
    SendOrder(600);
    SendOrder(400);
    ShowClient();
    surv_CleanupSurvManager();
    return 0;
}
