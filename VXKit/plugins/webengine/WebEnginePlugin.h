// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/platform/appkit/WebViewEngine.h>

/// Brings Qt WebEngine into WebView.
class WebEnginePlugin : public QObject, public WebViewEnginePlugin {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.vxkit.WebViewEnginePlugin/1")
    Q_INTERFACES(WebViewEnginePlugin)

public:
    [[nodiscard]] std::unique_ptr<WebViewEngine> makeEngine(QWidget& parent) override;
};
