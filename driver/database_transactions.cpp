#include "driver/ids.h"
#include "driver/invoke.h"

using namespace tk::driver;

long CTDatabase::BeginTrans() {
    long level = 0;
    dispatch_.InvokeHelper(connection::kBeginTrans, DISPATCH_METHOD, VT_I4, &level, kNoParms);
    return level;
}

void CTDatabase::CommitTrans() {
    Call(dispatch_, connection::kCommitTrans);
}

void CTDatabase::RollbackTrans() {
    Call(dispatch_, connection::kRollbackTrans);
}
