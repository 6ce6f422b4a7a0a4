#include "mshclient/imshclientdll.h"

IMshClientDll::~IMshClientDll() = default;
