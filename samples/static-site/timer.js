const teas = { Green: 120, Black: 240, Herbal: 420 };
const left = document.getElementById('left');
let ticking;

function show(seconds) {
  left.textContent = seconds > 0
    ? `${Math.floor(seconds / 60)}:${String(seconds % 60).padStart(2, '0')}`
    : 'Your tea is ready';
}

function brew(seconds) {
  const end = Date.now() + seconds * 1000;
  clearInterval(ticking);
  show(seconds);
  ticking = setInterval(() => {
    const rest = Math.round((end - Date.now()) / 1000);
    show(rest);
    if (rest <= 0) clearInterval(ticking);
  }, 250);
}

for (const [name, seconds] of Object.entries(teas)) {
  const button = document.createElement('button');
  button.textContent = `${name}, ${seconds / 60} min`;
  button.onclick = () => brew(seconds);
  document.getElementById('teas').append(button);
}
