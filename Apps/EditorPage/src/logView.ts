// The log pane: the library's log lines and the session's refusals, newest last, never dropped silently.
const kMaxLines = 500;

export type LogLevel = 'info' | 'warning' | 'error';

export class LogView {
  private readonly list: HTMLElement;
  private readonly toast: HTMLElement;
  private toastTimer = 0;

  constructor(root: HTMLElement, toast: HTMLElement) {
    this.list = root;
    this.toast = toast;
  }

  // A library line names its level in brackets ("[Warning] ..."); anything else is information.
  addLibraryLine(line: string): void {
    const level: LogLevel = line.startsWith('[Error]') ? 'error' : line.startsWith('[Warning]') ? 'warning' : 'info';
    this.add(line, level);
    if (level !== 'info') {
      this.flash(line, level);
    }
  }

  add(text: string, level: LogLevel): void {
    const row = document.createElement('div');
    row.className = `log-line log-${level}`;
    row.textContent = text;
    this.list.append(row);
    while (this.list.childElementCount > kMaxLines) {
      this.list.firstElementChild?.remove();
    }
    this.list.scrollTop = this.list.scrollHeight;
  }

  // A refusal the person should see where they are looking, and keep in the log.
  error(text: string): void {
    this.add(text, 'error');
    this.flash(text, 'error');
  }

  private flash(text: string, level: LogLevel): void {
    this.toast.textContent = text;
    this.toast.className = `toast toast-${level} visible`;
    window.clearTimeout(this.toastTimer);
    this.toastTimer = window.setTimeout(() => this.toast.classList.remove('visible'), 5000);
  }
}
