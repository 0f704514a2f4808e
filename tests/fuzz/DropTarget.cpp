#include "FuzzLaws.h"
#include "FuzzTargets.h"
#include "views/LoopDragPayload.h"

void FuzzTargets::drop(const QByteArray& input)
{
    const auto payload = LoopDragPayload::fromJson(input);
    if (!payload)
        return;
    const QByteArray written = payload->toJson();
    const auto again = LoopDragPayload::fromJson(written);
    FuzzLaws::require(again && again->toJson() == written,
                      "a loop that is dropped again is the same");
}
