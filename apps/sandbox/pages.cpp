#include "pages.h"

namespace kavio::sandbox {
namespace {

constexpr std::string_view style = R"(
:root { color-scheme: light dark; --back: #eef1f6; --card: #fff; --ink: #1b2430; --soft: #5c6878; --line: #c5ccd8;
        --main: #0b5cad; --on-main: #fff; --bad: #b3261e; }
@media (prefers-color-scheme: dark) {
  :root { --back: #12161c; --card: #1c222b; --ink: #e8ecf2; --soft: #a2adbb; --line: #414b59;
          --main: #7db7f5; --on-main: #06213d; --bad: #ffb4ab; }
}
* { box-sizing: border-box; }
body { margin: 0; min-height: 100vh; display: grid; place-items: center; padding: 1rem;
       background: var(--back); color: var(--ink); font: 1rem/1.5 system-ui, sans-serif; }
main { width: min(26rem, 100%); padding: clamp(1.25rem, 5vw, 2rem); background: var(--card);
       border: 1px solid var(--line); border-radius: 1rem; }
h1 { margin: 0 0 .25rem; font-size: 1.35rem; }
p { margin: 0 0 1rem; color: var(--soft); }
label { display: block; font-weight: 600; margin-bottom: .35rem; }
input { width: 100%; padding: .7rem .9rem; font: inherit; font-size: 1.4rem; letter-spacing: .3em; text-align: center;
        color: inherit; background: transparent; border: 1px solid var(--line); border-radius: .6rem; }
.hint { color: var(--bad); margin: .5rem 0 0; min-height: 1.5em; }
.actions { display: flex; flex-wrap: wrap; gap: .75rem; margin-top: 1rem; }
button { flex: 1 1 8rem; padding: .75rem 1rem; font: inherit; font-weight: 600; border-radius: .6rem; cursor: pointer;
         border: 1px solid var(--main); background: transparent; color: var(--main); }
button.main { background: var(--main); color: var(--on-main); }
input:focus-visible, button:focus-visible { outline: 3px solid var(--main); outline-offset: 2px; }
iframe { width: 100%; border: 1px solid var(--line); border-radius: .6rem; }
.dot { width: 2.5rem; height: 2.5rem; margin: 0 auto 1rem; border: 4px solid var(--line); border-top-color: var(--main);
       border-radius: 50%; animation: turn 1s linear infinite; }
@keyframes turn { to { transform: rotate(1turn); } }
@media (prefers-reduced-motion: reduce) { .dot { animation: none; } }
)";

constexpr std::string_view head = R"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>Kavio Test Bank</title>
<style>@style@</style>
</head>
)";

constexpr std::string_view challengeContent = R"(
<h1>Is it you?</h1>
<p>A wallet wants to store your card ending in @digits@. Enter the code that your bank has sent you (it is 1234).</p>
<form method="post">
  <label for="code">Code</label>
  <input id="code" name="code" inputmode="numeric" autocomplete="one-time-code" maxlength="8" value="@answer@" autofocus>
  <div class="hint" role="alert">@hint@</div>
  <div class="actions">
    <button class="main" name="action" value="accept">Confirm</button>
    <button name="action" value="cancel">Cancel</button>
  </div>
</form>
<script>
  const code = document.getElementById("code");
  if (code.value) setTimeout(() => code.form.submit(), 300);
</script>
)";

constexpr std::string_view fingerprintDocument = R"(<!DOCTYPE html>
<html>
<body>
<script>
  location.replace("@end@&screen=" + screen.width + "x" + screen.height + "&zone=" + new Date().getTimezoneOffset());
</script>
</body>
</html>
)";

std::string escaped(const std::string& text) { return filled(text, {{"&", "&amp;"}, {"<", "&lt;"}, {"\"", "&quot;"}}); }

std::string page(const std::string& content) {
    return filledPage("@head@<body><main>" + content + "</main></body>\n</html>\n", {});
}

}  // namespace

std::string filled(std::string_view page, const Values& values) {
    std::string text(page);
    for (const auto& [name, value] : values)
        for (auto at = text.find(name); at != std::string::npos; at = text.find(name, at + value.size()))
            text.replace(at, name.size(), value);
    return text;
}

std::string filledPage(std::string_view page, const Values& values) {
    return filled(filled(filled(page, {{"@head@", std::string(head)}}), {{"@style@", std::string(style)}}), values);
}

std::string fingerprintHtml(const std::string& end) { return filled(fingerprintDocument, {{"@end@", end}}); }

std::string challengeHtml(const std::string& lastDigits, const std::string& hint, const std::string& answer) {
    return page(filled(challengeContent, {{"@digits@", lastDigits}, {"@hint@", escaped(hint)}, {"@answer@", answer}}));
}

std::string waitingHtml() {
    return page(R"(<div class="dot"></div><h1>One moment</h1><p>We are asking your bank.</p>)");
}

std::string framedHtml(const std::string& frame) {
    return page(
        filled(R"(<h1>One moment</h1><p>Your bank answers below.</p><iframe src="@frame@" title="Bank"></iframe>)",
               {{"@frame@", frame}}));
}

std::string messageHtml(const std::string& message) { return page("<h1>Sorry</h1><p>" + escaped(message) + "</p>"); }

}  // namespace kavio::sandbox
