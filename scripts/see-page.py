#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Looks at a page with headless Chromium until it shows what it must.

see-page.py [OPTIONS] URL PICTURE TEXT...: ends with status 0 when the page shows all the texts, and neither
a script's error nor a breach of its content policy was noted; PICTURE gets a screenshot. With --open, a
transmission with that text is opened, and has to show its picture. With --search, the page searches its
archive for these words. With --telephone, the screen is that of one, and nothing may stand beyond its edge.
--ca names a PEM file of who signed the page's certificate: nobody else is trusted then. --password is given
when the page asks for one. Needs the packages chromium, python3-websocket and, for --ca, libnss3-tools.
"""
import argparse
import base64
import json
import os
import subprocess
import sys
import tempfile
import time
import urllib.request

import websocket

PATIENCE_s = 120
PAUSE_s = 0.2
TELEPHONE = {"width": 360, "height": 740, "deviceScaleFactor": 2, "mobile": True}


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--open")
    parser.add_argument("--search")
    parser.add_argument("--telephone", action="store_true")
    parser.add_argument("--ca")
    parser.add_argument("--password")
    parser.add_argument("url")
    parser.add_argument("picture")
    parser.add_argument("text", nargs="+")
    words = parser.parse_args()
    with tempfile.TemporaryDirectory(ignore_cleanup_errors=True) as profile:
        if words.ca:
            trust(words.ca, profile)
        # What the browser says goes into a file, since nobody empties a pipe.
        with open(os.path.join(profile, "log"), "w") as log:
            browser = subprocess.Popen(
                ["chromium", "--headless", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage",
                 "--remote-debugging-port=0", "--remote-allow-origins=*", "--window-size=1000,1400",
                 "--user-data-dir=" + profile, "about:blank"],
                stdout=log, stderr=log, env=dict(os.environ, HOME=profile))
        try:
            return look(port_of(browser, profile), words)
        finally:
            browser.kill()
            browser.wait()


def trust(ca, home):
    """Where the browser looks for what its user trusts."""
    folder = os.path.join(home, ".pki", "nssdb")
    os.makedirs(folder)
    for command in (["-N", "--empty-password"], ["-A", "-t", "C,,", "-n", "ca", "-i", ca]):
        subprocess.run(["certutil", "-d", "sql:" + folder] + command, check=True)


def port_of(browser, profile):
    """Of the debugging interface, which the browser writes into its profile when it is there."""
    path = os.path.join(profile, "DevToolsActivePort")
    end = time.monotonic() + PATIENCE_s
    while browser.poll() is None and time.monotonic() < end:
        if os.path.exists(path):
            with open(path) as file:
                lines = file.read().split("\n")
            if len(lines) > 1:
                return int(lines[0])
        time.sleep(PAUSE_s)
    with open(os.path.join(profile, "log")) as log:
        sys.exit("the browser does not start:\n" + log.read()[-2000:])


# What is heard while one is opened may not be archived yet, so one is tried after the other.
OPEN = """(() => {
    const picture = document.querySelector("#detail[open] img.picture");
    if (picture && picture.complete)
        return picture.naturalWidth > 0;
    if (!document.querySelector("#detail[open]"))
        [...document.querySelectorAll("#latest button.text")].filter((one) => one.textContent.includes(%s)).pop()?.click();
    return false;
})()"""

SEARCH = """(() => {
    document.querySelector("#search [name=words]").value = %s;
    document.querySelector("#search").requestSubmit();
})()"""

# Within a waterfall, texts are cut where it ends.
BEYOND = """[...document.querySelectorAll("body *")].filter((one) => {
    const place = one.getBoundingClientRect();
    return place.width > 0 && !one.closest(".waterfall") && (place.left < -1 || place.right > innerWidth + 1);
}).map((one) => one.tagName + " " + one.className + " " + one.textContent.slice(0, 40)).slice(0, 5).join("; ")"""


class Page:
    """One tab, through the browser's debugging interface."""

    def __init__(self, port, password):
        with urllib.request.urlopen("http://127.0.0.1:%d/json" % port) as answer:
            page = next(one for one in json.load(answer) if one["type"] == "page")
        self.socket = websocket.create_connection(page["webSocketDebuggerUrl"], timeout=PATIENCE_s)
        self.password = password
        self.count = 0
        self.faults = []
        for domain in ("Runtime", "Log"):
            self.ask(domain + ".enable")
        if password:
            self.ask("Fetch.enable", handleAuthRequests=True)

    def send(self, method, **words):
        self.count += 1
        self.socket.send(json.dumps({"id": self.count, "method": method, "params": words}))
        return self.count

    def ask(self, method, **words):
        number = self.send(method, **words)
        while True:
            message = json.loads(self.socket.recv())
            if message.get("id") == number:
                return message.get("result", {})
            self.take(message.get("method"), message.get("params", {}))

    def take(self, event, params):
        if event == "Runtime.exceptionThrown":
            self.faults.append(json.dumps(params["exceptionDetails"]))
        elif event == "Log.entryAdded" and params["entry"]["level"] == "error":
            self.faults.append(params["entry"]["text"])
        elif event == "Fetch.requestPaused":
            self.send("Fetch.continueRequest", requestId=params["requestId"])
        elif event == "Fetch.authRequired":
            self.send("Fetch.continueWithAuth", requestId=params["requestId"], authChallengeResponse={
                "response": "ProvideCredentials", "username": "reader", "password": self.password})

    def value(self, expression):
        return self.ask("Runtime.evaluate", expression=expression).get("result", {}).get("value", "")


def look(port, words):
    page = Page(port, words.password)
    if words.telephone:
        page.ask("Emulation.setDeviceMetricsOverride", **TELEPHONE)
    page.ask("Page.navigate", url=words.url)
    end = time.monotonic() + PATIENCE_s
    missing = words.text
    while missing and time.monotonic() < end:
        shown = page.value("document.body.innerText")
        missing = [text for text in words.text if text not in shown]
        if missing:
            if words.search and page.value("document.readyState") == "complete":
                page.value(SEARCH % json.dumps(words.search))
            time.sleep(PAUSE_s)
    if words.open:
        missing.append("the picture of " + words.open)
        while time.monotonic() < end and not page.value(OPEN % json.dumps(words.open)):
            time.sleep(PAUSE_s)
        if page.value(OPEN % json.dumps(words.open)):
            missing.pop()
    beyond = page.value(BEYOND)
    if beyond:
        page.faults.append("beyond the edge: " + beyond)
    image = page.ask("Page.captureScreenshot", format="png")
    with open(words.picture, "wb") as file:
        file.write(base64.b64decode(image["data"]))
    for text in missing:
        print("the page does not show: " + text)
    for fault in page.faults:
        print("the browser notes: " + fault)
    return 1 if missing or page.faults else 0


if __name__ == "__main__":
    sys.exit(main())
