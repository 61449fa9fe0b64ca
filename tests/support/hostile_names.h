#pragma once

#include <string>
#include <vector>

namespace tv2_tests
{

/// Names that mean something to HTML, JavaScript, JSON, paths or the direction of writing, or that are not UTF-16.
inline std::vector<std::u16string> HostileNames()
{
    return {u"",
            u"Hips",
            u"</script><script>window.hit = 1</script>",
            u"<!--<script>",
            u"<img src=x onerror=\"window.hit = 1\">",
            u"\"'`${window.hit = 1}\\",
            u"javascript:window.hit=1",
            u"__proto__",
            u"constructor",
            std::u16string(u"a\0b", 3),
            std::u16string(1, u'\0') + u"after",
            u"\xD800",
            u"\xD800x\xDC00",
            u"\xDC00\xD800",
            u"\u2028\u2029]]>",
            u"\u2028 \u202E \"quoted\" \\ / ~ ~1",
            u"\u202Egnp.exe",
            u"\x00C3\x00A9",
            u"\xFFFF\x0001\x001F\x007F",
            std::u16string(5000, u'w')};
}

} // namespace tv2_tests
