// Build step: makes the four world-map images (1024x512 to 8192x4096) from
// one equirectangular world picture with the 180-degree meridian at its
// edges, such as NASA's Visible Earth image that Debian's xplanet-images
// package installs as /usr/share/xplanet/images/earth.jpg.
//
// usage: make_map_images SOURCE.jpg OUTPUT_DIR
// writes OUTPUT_DIR/map_1024.jpg, map_2048.jpg, map_4096.jpg, map_8192.jpg

#include <cmath>
#include <cstddef>
#include <cstdio>
#include <string>
#include <vector>

// jpeglib.h expects size_t and FILE to be declared before it.
#include <jpeglib.h>

namespace {

struct Image {
    int width = 0, height = 0;
    std::vector<unsigned char> rgb;  // rows top to bottom, 3 bytes a pixel
};

// libjpeg's standard error handler prints the reason and exits, which is
// what a build step should do with a broken source picture.
bool ReadJpeg(const char* path, Image* image) {
    FILE* f = std::fopen(path, "rb");
    if (f == nullptr) {
        std::perror(path);
        return false;
    }
    jpeg_decompress_struct cinfo;
    jpeg_error_mgr jerr;
    cinfo.err = jpeg_std_error(&jerr);
    jpeg_create_decompress(&cinfo);
    jpeg_stdio_src(&cinfo, f);
    jpeg_read_header(&cinfo, TRUE);
    cinfo.out_color_space = JCS_RGB;
    jpeg_start_decompress(&cinfo);
    image->width = static_cast<int>(cinfo.output_width);
    image->height = static_cast<int>(cinfo.output_height);
    image->rgb.resize(static_cast<size_t>(image->width) * image->height * 3);
    while (cinfo.output_scanline < cinfo.output_height) {
        JSAMPROW row = &image->rgb[static_cast<size_t>(cinfo.output_scanline) * image->width * 3];
        jpeg_read_scanlines(&cinfo, &row, 1);
    }
    jpeg_finish_decompress(&cinfo);
    jpeg_destroy_decompress(&cinfo);
    std::fclose(f);
    return true;
}

bool WriteJpeg(const std::string& path, const Image& image, int quality) {
    FILE* f = std::fopen(path.c_str(), "wb");
    if (f == nullptr) {
        std::perror(path.c_str());
        return false;
    }
    jpeg_compress_struct cinfo;
    jpeg_error_mgr jerr;
    cinfo.err = jpeg_std_error(&jerr);
    jpeg_create_compress(&cinfo);
    jpeg_stdio_dest(&cinfo, f);
    cinfo.image_width = static_cast<JDIMENSION>(image.width);
    cinfo.image_height = static_cast<JDIMENSION>(image.height);
    cinfo.input_components = 3;
    cinfo.in_color_space = JCS_RGB;
    jpeg_set_defaults(&cinfo);
    jpeg_set_quality(&cinfo, quality, TRUE);
    jpeg_start_compress(&cinfo, TRUE);
    std::vector<unsigned char> row(static_cast<size_t>(image.width) * 3);
    while (cinfo.next_scanline < cinfo.image_height) {
        const unsigned char* src =
            &image.rgb[static_cast<size_t>(cinfo.next_scanline) * image.width * 3];
        row.assign(src, src + row.size());
        JSAMPROW p = row.data();
        jpeg_write_scanlines(&cinfo, &p, 1);
    }
    jpeg_finish_compress(&cinfo);
    jpeg_destroy_compress(&cinfo);
    return std::fclose(f) == 0;
}

// Area average when shrinking, bilinear when enlarging. Columns wrap round
// the 180-degree meridian; rows stop at the poles.
Image Resample(const Image& src, int width, int height) {
    Image out;
    out.width = width;
    out.height = height;
    out.rgb.resize(static_cast<size_t>(width) * height * 3);
    const double sx = static_cast<double>(src.width) / width,
                 sy = static_cast<double>(src.height) / height;
    auto at = [&src](int x, int y, int c) {
        x = ((x % src.width) + src.width) % src.width;
        y = y < 0 ? 0 : (y >= src.height ? src.height - 1 : y);
        return static_cast<double>(src.rgb[(static_cast<size_t>(y) * src.width + x) * 3 + c]);
    };
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            for (int c = 0; c < 3; ++c) {
                double value = 0;
                if (sx >= 1.0) {
                    const int x0 = static_cast<int>(x * sx), x1 = static_cast<int>((x + 1) * sx);
                    const int y0 = static_cast<int>(y * sy), y1 = static_cast<int>((y + 1) * sy);
                    for (int v = y0; v < y1; ++v)
                        for (int u = x0; u < x1; ++u) value += at(u, v, c);
                    value /= static_cast<double>((x1 - x0) * (y1 - y0));
                } else {
                    const double fx = (x + 0.5) * sx - 0.5, fy = (y + 0.5) * sy - 0.5;
                    const int ix = static_cast<int>(std::floor(fx)),
                              iy = static_cast<int>(std::floor(fy));
                    const double ax = fx - ix, ay = fy - iy;
                    value = (1 - ay) * ((1 - ax) * at(ix, iy, c) + ax * at(ix + 1, iy, c)) +
                            ay * ((1 - ax) * at(ix, iy + 1, c) + ax * at(ix + 1, iy + 1, c));
                }
                out.rgb[(static_cast<size_t>(y) * width + x) * 3 + c] = static_cast<unsigned char>(
                    std::lround(std::fmin(255.0, std::fmax(0.0, value))));
            }
        }
    }
    return out;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: make_map_images SOURCE.jpg OUTPUT_DIR\n");
        return 2;
    }
    Image source;
    if (!ReadJpeg(argv[1], &source)) return 1;
    if (source.width != 2 * source.height || source.width < 360) {
        std::fprintf(stderr,
                     "make_map_images: %s is %dx%d, not an equirectangular world map (2:1)\n",
                     argv[1], source.width, source.height);
        return 1;
    }
    for (int width : {1024, 2048, 4096, 8192}) {
        const Image image = width == source.width ? source : Resample(source, width, width / 2);
        const std::string path = std::string(argv[2]) + "/map_" + std::to_string(width) + ".jpg";
        if (!WriteJpeg(path, image, width >= 4096 ? 85 : 90)) return 1;
    }
    return 0;
}
