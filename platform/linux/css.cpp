// Vantorel. MIT licence, see LICENSE.
// Colours and style sheets.
#include "platform/linux/css.h"

#include <array>
#include <cmath>
#include <variant>

namespace vantorel::gtk {
namespace {

GdkRGBA opaque(double red, double green, double blue, double alpha = 1) {
    return {static_cast<float>(red), static_cast<float>(green), static_cast<float>(blue), static_cast<float>(alpha)};
}

GdkRGBA shadeOf(SystemColor color) {
    switch (color) {
    case SystemColor::clear:
        return opaque(0, 0, 0, 0);
    case SystemColor::orange:
        return opaque(0.68, 0.34, 0);
    case SystemColor::red:
        return opaque(0.78, 0.10, 0.12);
    case SystemColor::systemGreen:
        return opaque(0.04, 0.47, 0.17);
    }
    return opaque(0, 0, 0);
}

// The relative luminance of the web's accessibility guidelines.
double luminance(const GdkRGBA& color) {
    const auto linear = [](double c) { return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4); };
    return 0.2126 * linear(color.red) + 0.7152 * linear(color.green) + 0.0722 * linear(color.blue);
}

} // namespace

GdkRGBA rgbaOf(const Color& color) {
    if (const auto* system = std::get_if<SystemColor>(&color))
        return shadeOf(*system);
    const auto& rgb = std::get<CalibratedRgb>(color);
    return opaque(rgb.red, rgb.green, rgb.blue, rgb.alpha);
}

std::string cssColor(const GdkRGBA& color) {
    std::array<char, G_ASCII_DTOSTR_BUF_SIZE> number{};
    const auto component = [&number](double value) {
        return std::string(g_ascii_formatd(number.data(), static_cast<int>(number.size()), "%.6f", value));
    };
    return "rgba(" + component(color.red * 255.0) + "," + component(color.green * 255.0) + "," +
           component(color.blue * 255.0) + "," + component(color.alpha) + ")";
}

double contrast(const GdkRGBA& one, const GdkRGBA& other) {
    const double a = luminance(one) + 0.05;
    const double b = luminance(other) + 0.05;
    return a > b ? a / b : b / a;
}

GdkRGBA readableOn(const GdkRGBA& background) {
    const GdkRGBA black = opaque(0.12, 0.12, 0.12);
    const GdkRGBA white = opaque(1, 1, 1);
    return contrast(black, background) >= contrast(white, background) ? black : white;
}

void styleMenusFor(GdkDisplay* display) {
    if (display == nullptr || gdk_display_is_composited(display) != FALSE)
        return;
    const auto provider = Object<GtkCssProvider>::take(gtk_css_provider_new());
    gtk_css_provider_load_from_data(provider.get(), "popover > contents { border-radius: 0; box-shadow: none; }", -1);
    gtk_style_context_add_provider_for_display(display, GTK_STYLE_PROVIDER(provider.get()),
                                               GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
}

Style::~Style() { release(); }

void Style::release() {
    if (widget_ && provider_) {
        gtk_style_context_remove_provider(gtk_widget_get_style_context(widget_.get()),
                                          GTK_STYLE_PROVIDER(provider_.get()));
    }
}

void Style::set(GtkWidget* widget, const std::string& declarations) {
    if (widget_.get() != widget) {
        release();
        widget_ = Object<GtkWidget>::share(widget);
        provider_ = Object<GtkCssProvider>::take(gtk_css_provider_new());
        gtk_style_context_add_provider(gtk_widget_get_style_context(widget), GTK_STYLE_PROVIDER(provider_.get()),
                                       GTK_STYLE_PROVIDER_PRIORITY_USER + 1);
    }
    const std::string sheet = "* {" + declarations + "}";
    gtk_css_provider_load_from_data(provider_.get(), sheet.data(), static_cast<gssize>(sheet.size()));
}

} // namespace vantorel::gtk
