// The session's two channels: requests over POST /api, updates over the event stream.
import type { SessionEvent } from './protocol';

// A request the session refused: `message` is its reason, as the library gave it.
export class RequestFailed extends Error {}

export class Api {
  private nextId = 1;

  constructor(private readonly token: string) {}

  // Resolves with the reply's result; rejects with RequestFailed carrying the session's reason, or with the
  // transport's own error when the session cannot be reached.
  async request<T = unknown>(body: Record<string, unknown>): Promise<T> {
    const id = this.nextId++;
    const response = await fetch(`/api?token=${encodeURIComponent(this.token)}`, {
      method: 'POST',
      headers: { 'Content-Type': 'application/json' },
      body: JSON.stringify({ id, ...body }),
    });
    let reply: { ok?: boolean; result?: T; error?: string };
    try {
      reply = await response.json();
    } catch {
      throw new RequestFailed(`${String(body.type)}: the session answered ${response.status} without JSON`);
    }
    if (!reply.ok) {
      throw new RequestFailed(reply.error ?? `${String(body.type)} failed (${response.status})`);
    }
    return reply.result as T;
  }

  // Opens the event stream; EventSource reconnects by itself, and `onOpen` lets the page re-read then.
  listen(onEvent: (event: SessionEvent) => void, onOpen: () => void, onLost: () => void): EventSource {
    const source = new EventSource(`/events?token=${encodeURIComponent(this.token)}`);
    source.onopen = onOpen;
    source.onerror = onLost;
    source.onmessage = (message) => {
      try {
        onEvent(JSON.parse(message.data) as SessionEvent);
      } catch {
        onLost();
      }
    };
    return source;
  }
}
