#!/usr/bin/python3
# A stand-in for Claude's usage endpoint on 127.0.0.1, with real-looking utilisation, for
# demonstrations and screenshots (scripts/demo-session.sh). Prints its port, then serves.
import http.server
import json
import sys
from datetime import datetime, timedelta, timezone


class Handler(http.server.BaseHTTPRequestHandler):
    def do_GET(self):
        if self.path != "/api/oauth/usage" or not self.headers.get("Authorization", "").startswith("Bearer "):
            self.send_error(404)
            return
        now = datetime.now(timezone.utc)
        stamp = lambda delta: (now + delta).isoformat()
        body = json.dumps({
            "five_hour": {"utilization": 63.5, "resets_at": stamp(timedelta(hours=1, minutes=41))},
            "seven_day": {"utilization": 27, "resets_at": stamp(timedelta(days=5, hours=3))},
            "seven_day_opus": {"utilization": 0, "resets_at": None},
            "seven_day_sonnet": {"utilization": 12.25, "resets_at": stamp(timedelta(days=5, hours=3))},
        }).encode()
        self.send_response(200)
        self.send_header("Content-Type", "application/json")
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)

    def log_message(self, *args):
        pass


server = http.server.HTTPServer(("127.0.0.1", 0), Handler)
print(server.server_address[1], flush=True)
server.serve_forever()
