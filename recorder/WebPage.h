#pragma once

namespace recorder {

// The one HTML page of the web side, script and style included: it shows the call list at "/"
// and a call at "/calls/<id>", and fills itself from the JSON API. "{{nonce}}" stands for the
// nonce that the response's Content-Security-Policy names.
const char* webPage();

}  // namespace recorder
