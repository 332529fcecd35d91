#include "platform/https/HttpsDownloader.h"

#include "platform/https/HttpsTransfer.h"

#include <memory>
#include <utility>

namespace tarnwick {

HttpsDownloader::HttpsDownloader(RunLoop& loop, HttpsPatience patience) : loop_(loop), patience_(patience) {
}

RunLoop::Handle HttpsDownloader::fetch(const Request& request, Receiver receiver) {
    return std::make_unique<HttpsTransfer>(loop_, patience_, request, std::move(receiver));
}

} // namespace tarnwick
